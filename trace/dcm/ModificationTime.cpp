#include "trace/dcm/ModificationTime.h"

#include <sys/stat.h>

namespace Zu::Wep::Trace {

std::optional<std::int64_t> ModificationTime(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return status.st_mtime;
}

}  // namespace Zu::Wep::Trace
