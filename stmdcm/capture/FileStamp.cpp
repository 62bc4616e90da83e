#include "stmdcm/capture/FileStamp.h"

#include <fmt/format.h>

#include <cerrno>

#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

/// A time that no calendar holds wraps, which still tells it from others.
std::uint64_t Nanoseconds(const timespec& time) {
    constexpr std::uint64_t kInASecond = 1'000'000'000;
    return static_cast<std::uint64_t>(time.tv_sec) * kInASecond + static_cast<std::uint64_t>(time.tv_nsec);
}

}  // namespace

FileStamp::FileStamp(const struct stat& info)
    : device(info.st_dev),
      inode(info.st_ino),
      size(static_cast<std::uint64_t>(info.st_size)),
      modified(Nanoseconds(info.st_mtim)),
      changed(Nanoseconds(info.st_ctim)) {}

FileStamp FileStamp::Of(const ZU_WEP::PosixFile& file, const std::string& path) {
    struct stat info {};
    if (::fstat(file.Descriptor(), &info) != 0) {
        const int error = errno;
        throw Failure(path, fmt::format("the file can't be looked at: {}", ZU_WEP::ErrnoText(error)));
    }
    return FileStamp(info);
}

}  // namespace stmdcm
