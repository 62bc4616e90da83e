#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include <cstdint>
#include <string>

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// One object (program) file as it was when it was recorded.
struct FILE_Info {
    std::string fileName;
    std::int64_t timeStamp = 0;  ///< modification time, seconds since 1970-01-01 UTC (`st_mtime` of stat(2))
};

}  // namespace Zu::Wep::Trace
