#include "trace/dcm/SettingsLog.h"

#include "source_utilities/Log.h"

namespace Zu::Wep::Trace {

void SettingsLog::OnLineCut(std::size_t line, std::size_t /*length*/, std::size_t limit) {
    ZU_WEP::Log(ZU_WEP::LogError, "STM Device DCM: %s line %zu is longer than %zu characters, the rest is skipped",
                m_source.c_str(), line, limit);
}

}  // namespace Zu::Wep::Trace
