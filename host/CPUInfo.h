#pragma once

#include <cstdint>

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// One CPU of the target device, described by the host.
/// The host owns it and keeps it, name included, alive as long as a manager made for it.
struct CPUInfo {
    const char* name;  ///< zero-terminated, shorter than 128 characters; names the CPU's settings file
    std::int32_t deviceId;
    std::int32_t reserved;  ///< not read by the managers
    std::int32_t cpuId;
};

}  // namespace Zu::Wep::Trace
