#include "trace/dcm/EnvironmentVariables.h"

#include <stdexcept>

#include "source_utilities/uEnvironment.h"

namespace Zu::Wep::Trace {

std::string SettingsPath(const std::string& name) {
    const std::string directory = ZU_WEP::uEnvironment::GetVar(kSettingsDirectoryVariable);
    if (directory.empty()) {
        throw std::logic_error(std::string(kSettingsDirectoryVariable) + " names no directory for settings files");
    }
    return directory + "/" + name;
}

}  // namespace Zu::Wep::Trace
