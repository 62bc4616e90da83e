#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tests/faults/FaultPlan.h"

namespace stmdcm_test {

/// Appends what a program changes on disk to a file, as DiskChange. Makes its own calls past the C library, and leaves
/// errno alone.
class ShimRecorder {
  public:
    static constexpr off_t kHere = -1;

    void Start(const char* reportFile) { std::snprintf(m_path, sizeof m_path, "%s%s", reportFile, kRecordingEnd); }

    static bool IsNew(const char* path, int flags) {
        const int error = errno;
        const bool isNew = (flags & O_CREAT) != 0 && ::syscall(SYS_access, path, F_OK) != 0;
        errno = error;
        return isNew;
    }
    void Opened(int descriptor, const char* path, int flags, bool isNew) const {
        if (descriptor < 0) {
            return;
        }
        if (isNew || (flags & O_TMPFILE) == O_TMPFILE) {
            Put(DiskChange::Create, InodeOf(descriptor), 0);
        }
        if (isNew) {
            Named(path, "");
        } else if ((flags & O_TRUNC) != 0) {
            Put(DiskChange::Truncate, InodeOf(descriptor), 0);
        }
    }
    /// `at` a place; kHere: in front of where the descriptor stands.
    void Wrote(int descriptor, off_t at, const iovec* pieces, ssize_t done) const {
        if (done > 0 && descriptor > STDERR_FILENO) {
            const int error = errno;
            at = at == kHere ? ::syscall(SYS_lseek, descriptor, 0, SEEK_CUR) - done : at;
            errno = error;
            Put(DiskChange::Write, InodeOf(descriptor), static_cast<std::uint64_t>(at), static_cast<size_t>(done),
                pieces);
        }
    }
    void Truncated(int descriptor, off_t size) const {
        Put(DiskChange::Truncate, InodeOf(descriptor), static_cast<std::uint64_t>(size));
    }
    void Synced(int descriptor) const { Put(DiskChange::Sync, InodeOf(descriptor), 0); }
    void Named(const char* name, const char* lost) const {
        char folder[PATH_MAX]{};
        const char* const either = *name != '\0' ? name : lost;
        const char* const slash = std::strrchr(either, '/');
        std::snprintf(folder, sizeof folder, "%.*s", slash == nullptr ? 1 : static_cast<int>(slash - either + 1),
                      slash == nullptr ? "." : either);
        const iovec both[] = {{const_cast<char*>(name), std::strlen(name) + 1},
                              {const_cast<char*>(lost), std::strlen(lost)}};
        Put(DiskChange::Name, InodeOf(name), InodeOf(folder), both[0].iov_len + both[1].iov_len, both);
    }

  private:
    static std::uint64_t InodeOf(int descriptor) {
        struct stat info {};
        return ::syscall(SYS_fstat, descriptor, &info) == 0 ? info.st_ino : 0;
    }
    static std::uint64_t InodeOf(const char* path) {
        struct stat info {};
        return ::syscall(SYS_stat, path, &info) == 0 ? info.st_ino : 0;
    }
    void Put(DiskChange::Kind kind, std::uint64_t inode, std::uint64_t at, size_t size = 0,
             const iovec* pieces = nullptr) const {
        if (*m_path == '\0') {
            return;
        }
        const int error = errno;
        const long file = ::syscall(SYS_openat, AT_FDCWD, m_path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        const DiskChange change{kind, inode, at, size};
        ::syscall(SYS_write, file, &change, sizeof change);
        for (; size > 0; size -= std::min(size, pieces++->iov_len)) {
            ::syscall(SYS_write, file, pieces->iov_base, std::min(size, pieces->iov_len));
        }
        ::syscall(SYS_close, file);
        errno = error;
    }

    char m_path[PATH_MAX]{};
};

}  // namespace stmdcm_test
