#pragma once

#include <string>

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// What a manager asks its host. Registered with CDeviceConfigManager::RegisterEventHandler, borrowed from then on.
/// Called on the thread that called the manager, which may be called again meanwhile, but not destroyed.
class CDeviceConfigEvents {
  public:
    /// Asks which object file to use instead of `file`.
    /// `timeStampChanged` false: `file` can't be opened, or it is the prompt "Application for NAME"; find the file.
    /// `timeStampChanged` true: `file` is there but was modified since it was recorded; confirm it or name another.
    /// `newFile` comes in empty; leave it empty to say that there is none, set it to `file` to accept `file`.
    virtual void OnUpdateObjectFile(const std::string& file, [[maybe_unused]] bool timeStampChanged,
                                    std::string& newFile) {
        newFile = file;
    }

    virtual ~CDeviceConfigEvents() = default;
};

}  // namespace Zu::Wep::Trace
