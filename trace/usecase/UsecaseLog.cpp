#include "trace/usecase/UsecaseLog.h"

#include <string>

#include "source_utilities/Log.h"

namespace Zu::Wep::Trace {

void UsecaseLog::OnValueCut(std::string_view key, std::size_t length) {
    ZU_WEP::Log(ZU_WEP::LogUnexpected, "Use case: value of \"%s\" cut to %zu characters", std::string(key).c_str(),
                length);
}

void UsecaseLog::OnLineFeed(std::string_view key) {
    ZU_WEP::Log(ZU_WEP::LogUnexpected, "Use case: line feed in \"%s\" written as a blank", std::string(key).c_str());
}

}  // namespace Zu::Wep::Trace
