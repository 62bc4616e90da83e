#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Zu::Wep::Trace {

/// When the file `path` was modified (`st_mtime` of stat(2), seconds since 1970-01-01 UTC); nothing, and `errno`,
/// when stat fails.
std::optional<std::int64_t> ModificationTime(const std::string& path);

}  // namespace Zu::Wep::Trace
