#include "source_utilities/TemporaryFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "source_utilities/Temporaries.h"

namespace ZU_WEP {

TemporaryFile::TemporaryFile(const std::string& directory, mode_t mode) {
    RemoveLeftovers(directory);
    m_exists = MakeTemporary(directory, [&](const std::string& path) {
        m_path = path;
        m_file = PosixFile::Open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode);
        return m_file.IsOpen();
    });
    if (m_exists) {
        LockTemporary(m_file);
    }
}

TemporaryFile::~TemporaryFile() {
    if (m_exists) {
        const int error = errno;
        ::unlink(m_path.c_str());
        errno = error;
    }
}

bool TemporaryFile::Fill(std::string_view content) {
    if (!m_file.WriteAt(0, {content}) || !m_file.Sync()) {
        return false;
    }
    // Some file systems tell only a close that they could not store it, and a file that is in place can't be taken
    // back. The lock stays with the other descriptor.
    const int copy = ::fcntl(m_file.Descriptor(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    return copy < 0 || ::close(copy) == 0 || errno == EINTR;
}

bool TemporaryFile::RenameTo(const std::string& target) {
    if (::rename(m_path.c_str(), target.c_str()) != 0) {
        return false;
    }
    m_exists = false;
    return m_file.Close();  // not before, since its lock goes with it
}

}  // namespace ZU_WEP
