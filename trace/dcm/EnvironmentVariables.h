#pragma once

#include <string>

namespace Zu::Wep::Trace {

inline constexpr char kDebugClientVariable[] = "ZU_TRACE_DEBUGCLIENT_PID";
inline constexpr char kLoggingVariable[] = "ZU_TRACE_LOGGING";
inline constexpr char kLoggingDirectoryVariable[] = "ZU_TRACE_LOGGING_DIR";
inline constexpr char kDataDirectoryVariable[] = "ZU_TRACE_DATA_DIR";
inline constexpr char kSettingsDirectoryVariable[] = "ZU_TRACE_SETTINGS_DIR";

/// The path of `name` in the trace settings directory. Throws std::logic_error when the variable that names the
/// directory is unset or empty.
std::string SettingsPath(const std::string& name);

}  // namespace Zu::Wep::Trace
