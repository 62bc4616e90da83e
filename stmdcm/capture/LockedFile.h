#pragma once

#include <functional>
#include <optional>
#include <string>

#include "source_utilities/FileLock.h"
#include "source_utilities/PosixFile.h"

namespace stmdcm {

/// A file open for reading and writing, under the exclusive flock(2) that managers take while they save: who changes a
/// file reads and writes it while this lives. So no two changes are mixed, and none is lost. Never let the plug-in
/// save into the file meanwhile: it would go on without the lock after five seconds.
class LockedFile {
  public:
    /// Waits for the lock, and after a second says so. Throws Failure where the file can't be opened for writing.
    explicit LockedFile(std::string path);

    /// What says so, in all of the program: it is given the path. None at first.
    static void OnLongWait(std::function<void(const std::string&)> tell);
    /// What hears, in all of the program, that a signal's handler has run on a thread that waits; to give up it throws.
    /// None at first.
    static void OnInterrupt(std::function<void()> hear);

    const std::string& Path() const { return m_path; }
    const ZU_WEP::PosixFile& File() const { return m_file; }

    /// Gives the lock back; false when the system reports that data could not be stored.
    bool Close();

  private:
    void Open();
    bool IsStillAtPath() const;

    std::string m_path;
    ZU_WEP::PosixFile m_file;
    std::optional<ZU_WEP::FileLock> m_lock;
};

}  // namespace stmdcm
