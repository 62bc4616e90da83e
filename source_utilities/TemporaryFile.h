#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "source_utilities/PosixFile.h"

namespace ZU_WEP {

/// A temporary file (source_utilities/Temporaries.h), open for writing; removed again unless it takes another one's
/// place. What returns false leaves the reason in `errno`.
class TemporaryFile {
  public:
    /// Makes it in the directory, from which it removes what others have left; ask Exists whether that worked.
    TemporaryFile(const std::string& directory, mode_t mode);
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile();

    bool Exists() const { return m_exists; }
    const PosixFile& File() const { return m_file; }
    /// Stores the content, synced.
    bool Fill(std::string_view content);
    /// Takes the place of the file of that name, in the same directory, and is closed and unlocked. Where that fails it
    /// still Exists, unless it is in place and the close told that it is not stored.
    bool RenameTo(const std::string& target);

  private:
    std::string m_path;
    PosixFile m_file;
    bool m_exists = false;
};

}  // namespace ZU_WEP
