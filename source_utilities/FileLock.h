#pragma once

#include <chrono>
#include <functional>

#include "source_utilities/PosixFile.h"

namespace ZU_WEP {

/// How long the locks of one piece of work are waited for, in all.
struct LockPatience {
    std::chrono::nanoseconds left = std::chrono::seconds(5);
    bool hasRunOut = false;  ///< a lock was not had in this time: the work goes on without it
};

/// Holds the file's exclusive flock(2), where it can be had.
class FileLock {
  public:
    /// Borrows `file`, which must stay open as long as this lives. Waits for as long as it takes, and calls
    /// `onInterrupt`, which may throw, where a signal's handler has run meanwhile on this thread.
    explicit FileLock(const PosixFile& file, const std::function<void()>& onInterrupt = nullptr);
    /// Waits for what is left of `patience`, less what it waited. A lock that is free is had whatever is left.
    FileLock(const PosixFile& file, LockPatience& patience);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    /// False when the patience has run out, and on file systems without such locks.
    bool IsHeld() const { return m_isHeld; }

  private:
    int m_descriptor;
    bool m_isHeld = false;
};

}  // namespace ZU_WEP
