#pragma once

// Temporary files and directories are called ".stmdcm-PROCESS-NUMBER.tmp" and locked by flock(2) for as long as they
// are in use. So those that a killed process has left can be told.

#include <functional>
#include <string>

#include "source_utilities/PosixFile.h"

namespace ZU_WEP {

/// Calls `make` with the path of a new one in the directory, and again with another while it fails with EEXIST. What it
/// gave, and `errno`, are those of the last call.
bool MakeTemporary(const std::string& directory, const std::function<bool(const std::string& path)>& make);

/// For those who don't see this process, such as another machine's. Until it is closed; false where there is no lock.
bool LockTemporary(const PosixFile& file);

/// Removes the user's own in the directory that a process has left which is gone: none that runs has its number, and
/// none holds the lock. Directories go by `removeDirectory`; without it they stay. Needs one descriptor at a time.
void RemoveLeftovers(const std::string& directory,
                     const std::function<void(const std::string& path)>& removeDirectory = {});

}  // namespace ZU_WEP
