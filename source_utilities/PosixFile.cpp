#include "source_utilities/PosixFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace ZU_WEP {

namespace {

/// Repeats a system call for as long as signals interrupt it.
template <typename Call>
auto Retry(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// Repeats a transfer, `step(done)`, until `size` bytes are done or it gives 0; nothing on an error.
template <typename Step>
std::optional<std::size_t> Transfer(std::size_t size, Step step) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = Retry([&] { return step(done); });
        if (count < 0) {
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
    return done;
}

bool IsComplete(std::optional<std::size_t> done, std::size_t size) {
    if (done && *done < size) {
        errno = EIO;  // a write that accepts nothing and gives no reason
        return false;
    }
    return done.has_value();
}

bool IsWithinSizeLimit(std::uint64_t end) {
    rlimit limit{};
    if (::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY && end > limit.rlim_cur) {
        errno = EFBIG;
        return false;
    }
    return true;
}

/// No caller has more. Without memory of its own, so that no write stops in its midst for want of it.
struct Pieces {
    std::array<iovec, 4> all;
    std::size_t count = 0;
};

/// What remains of the pieces behind their first `done` bytes, or the first of it.
Pieces Remainder(std::initializer_list<std::string_view> pieces, std::size_t done) {
    Pieces rest{};
    for (std::string_view piece : pieces) {
        const std::size_t skip = std::min(done, piece.size());
        done -= skip;
        piece.remove_prefix(skip);
        if (!piece.empty() && rest.count < rest.all.size()) {
            rest.all[rest.count++] = {const_cast<char*>(piece.data()), piece.size()};
        }
    }
    return rest;
}

bool SyncResult(int result) { return result == 0 || errno == EINVAL || errno == ENOTSUP; }

}  // namespace

PosixFile::PosixFile(PosixFile&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

PosixFile& PosixFile::operator=(PosixFile&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

PosixFile::~PosixFile() {
    const int error = errno;
    Close();
    errno = error;
}

PosixFile PosixFile::Open(const char* path, int flags, mode_t mode) {
    PosixFile file(Retry([&] { return ::open(path, flags | O_CLOEXEC, mode); }));
    file.LeaveStandardStreams();
    return file;
}

PosixFile PosixFile::InMemory(const char* name) {
    PosixFile file(::memfd_create(name, MFD_CLOEXEC));
    file.LeaveStandardStreams();
    return file;
}

/// Where the host has closed one of them, what anybody prints would land in the file. It stays if no other descriptor
/// is free.
void PosixFile::LeaveStandardStreams() {
    if (m_descriptor < 0 || m_descriptor > STDERR_FILENO) {
        return;
    }
    const int other = ::fcntl(m_descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (other >= 0) {
        ::close(std::exchange(m_descriptor, other));
    }
}

PosixFile PosixFile::OpenAtOnce(const char* path, int flags, mode_t mode) {
    return Open(path, flags | O_NONBLOCK | O_NOCTTY, mode);
}

bool PosixFile::Close() {
    if (!IsOpen()) {
        return true;
    }
    // Not repeated: the descriptor is released even when a signal interrupts the call.
    return ::close(std::exchange(m_descriptor, -1)) == 0 || errno == EINTR;
}

std::optional<std::size_t> PosixFile::Read(void* buffer, std::size_t size) const {
    return Transfer(
        size, [&](std::size_t done) { return ::read(m_descriptor, static_cast<char*>(buffer) + done, size - done); });
}

PosixFile::ReadEnd PosixFile::ReadToEnd(std::string& bytes, std::size_t limit) const {
    constexpr std::size_t kAtOnce = 64 << 10;
    struct stat info {};
    const bool hasSize = ::fstat(m_descriptor, &info) == 0 && S_ISREG(info.st_mode);
    bytes.clear();
    bytes.reserve(std::min(limit, hasSize ? static_cast<std::size_t>(info.st_size) : kAtOnce) + 1);
    for (std::size_t size = 0; size <= limit;) {  // one byte more tells whether there is more
        bytes.resize(std::min(limit + 1, size < bytes.capacity() ? bytes.capacity() : size + kAtOnce));
        const ssize_t count = Retry([&] { return ::read(m_descriptor, bytes.data() + size, bytes.size() - size); });
        size += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        bytes.resize(size);
        if (count <= 0) {
            return count == 0 ? ReadEnd::EndOfFile : ReadEnd::Failure;
        }
    }
    bytes.resize(limit);
    return ReadEnd::Limit;
}

std::optional<std::size_t> PosixFile::ReadAt(std::uint64_t offset, void* buffer, std::size_t size) const {
    return Transfer(size, [&](std::size_t done) {
        return ::pread(m_descriptor, static_cast<char*>(buffer) + done, size - done, static_cast<off_t>(offset + done));
    });
}

bool PosixFile::Write(std::string_view bytes) const {
    struct stat info {};
    if (::fstat(m_descriptor, &info) == 0 && S_ISREG(info.st_mode)) {  // no other file has a limit
        const off_t position = ::lseek(m_descriptor, 0, SEEK_CUR);
        if (position >= 0 && !IsWithinSizeLimit(static_cast<std::uint64_t>(position) + bytes.size())) {
            return false;
        }
    }
    const auto step = [&](std::size_t done) { return ::write(m_descriptor, bytes.data() + done, bytes.size() - done); };
    return IsComplete(Transfer(bytes.size(), step), bytes.size());
}

bool PosixFile::WriteAt(std::uint64_t offset, std::initializer_list<std::string_view> pieces,
                        std::uint64_t* done) const {
    std::size_t size = 0;
    for (const std::string_view piece : pieces) {
        size += piece.size();
    }
    if (!IsWithinSizeLimit(offset + size)) {
        return false;
    }
    const auto step = [&](std::size_t behind) {
        if (done != nullptr) {
            *done = behind;
        }
        const Pieces rest = Remainder(pieces, behind);
        return ::pwritev(m_descriptor, rest.all.data(), static_cast<int>(rest.count),
                         static_cast<off_t>(offset + behind));
    };
    const bool isComplete = IsComplete(Transfer(size, step), size);
    if (done != nullptr && isComplete) {
        *done = size;
    }
    return isComplete;
}

std::optional<std::uint64_t> PosixFile::Size() const {
    struct stat info {};
    if (::fstat(m_descriptor, &info) == 0 && S_ISREG(info.st_mode)) {
        return static_cast<std::uint64_t>(info.st_size);
    }
    const off_t end = ::lseek(m_descriptor, 0, SEEK_END);
    return end < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(end));
}

std::uint64_t PosixFile::NextData(std::uint64_t offset) const {
    const off_t data = ::lseek(m_descriptor, static_cast<off_t>(offset), SEEK_DATA);
    if (data >= 0) {
        return static_cast<std::uint64_t>(data);
    }
    return errno == ENXIO ? Size().value_or(offset) : offset;
}

bool PosixFile::Truncate(std::uint64_t size) const {
    if (size > Size().value_or(0) && !IsWithinSizeLimit(size)) {
        return false;
    }
    return Retry([&] { return ::ftruncate(m_descriptor, static_cast<off_t>(size)); }) == 0;
}

bool PosixFile::Reserve(std::uint64_t offset, std::uint64_t size) const {
    if (size == 0) {
        return true;
    }
    if (!IsWithinSizeLimit(offset + size)) {
        return false;
    }
    const int result = Retry([&] {
        return ::fallocate(m_descriptor, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset), static_cast<off_t>(size));
    });
    return result == 0 || (errno != ENOSPC && errno != EDQUOT && errno != EFBIG && errno != EIO);
}

bool PosixFile::Sync() const {
    return SyncResult(Retry([&] { return ::fsync(m_descriptor); }));
}

bool PosixFile::SyncData() const {
    return SyncResult(Retry([&] { return ::fdatasync(m_descriptor); }));
}

}  // namespace ZU_WEP
