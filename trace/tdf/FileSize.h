#pragma once

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// The low 32 bits of the file's size in bytes; 0 when it cannot be opened (a null path included). Never throws.
STMDCM_EXPORT unsigned int FileSize(const char* path);

}  // namespace Zu::Wep::Trace
