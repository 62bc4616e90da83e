#include "source_utilities/TemporaryFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

namespace ZU_WEP {

namespace {

constexpr int MaxNameAttempts = 1000;
constexpr mode_t PermissionBits = 07777;

}  // namespace

TemporaryFile::TemporaryFile(const std::string& directory, mode_t mode) {
    static std::atomic<unsigned> counter{0};
    for (int attempt = 0; attempt < MaxNameAttempts; ++attempt) {
        m_path = directory + "/.stmdcm-" + std::to_string(::getpid()) + "-" + std::to_string(++counter) + ".tmp";
        m_file = PosixFile::Open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode);
        if (m_file.IsOpen() || errno != EEXIST) {
            break;
        }
    }
    m_exists = m_file.IsOpen();
}

TemporaryFile::~TemporaryFile() {
    if (m_exists) {
        const int error = errno;
        ::unlink(m_path.c_str());
        errno = error;
    }
}

bool TemporaryFile::TakeModeAndOwner(const struct stat& other) {
    struct stat own {};
    const int descriptor = m_file.Descriptor();
    if (::fstat(descriptor, &own) != 0) {
        return false;
    }
    const bool sameOwner = own.st_uid == other.st_uid && own.st_gid == other.st_gid;
    return (sameOwner || ::fchown(descriptor, other.st_uid, other.st_gid) == 0) &&
           ::fchmod(descriptor, other.st_mode & PermissionBits) == 0;
}

bool TemporaryFile::Fill(std::string_view content) {
    return m_file.WriteAt(0, {content}) && m_file.Sync() && m_file.Close();
}

bool TemporaryFile::RenameTo(const std::string& target) {
    if (::rename(m_path.c_str(), target.c_str()) != 0) {
        return false;
    }
    m_exists = false;
    return true;
}

}  // namespace ZU_WEP
