#include "stmdcm/capture/CaptureFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "stmdcm/Failure.h"
#include "trace/format/SectionLayout.h"

namespace stmdcm {

namespace {

using Zu::Wep::Trace::kTDFIdentifier;

std::string WhyItCantBeOpened(int error) {
    switch (error) {
        case ENOENT:
            return "there is no such file; check the path";
        case EACCES:
            return "no permission to read the file; ask its owner or change its mode";
        default:
            return fmt::format("the file can't be opened: {}", ZU_WEP::ErrnoText(error));
    }
}

/// Opens without waiting for the other end of a pipe.
ZU_WEP::PosixFile OpenRegular(const std::string& path, std::uint64_t& size) {
    ZU_WEP::PosixFile file = ZU_WEP::PosixFile::Open(path.c_str(), O_RDONLY | O_NONBLOCK);
    if (!file.IsOpen()) {
        throw Failure(path, WhyItCantBeOpened(errno));
    }
    struct stat info {};
    if (::fstat(file.Descriptor(), &info) != 0) {
        throw Failure(path, WhyItCantBeOpened(errno));
    }
    if (S_ISDIR(info.st_mode)) {
        throw Failure(path, "this is a directory; name a capture in it");
    }
    if (!S_ISREG(info.st_mode)) {
        throw Failure(path, "this is not a regular file; copy the capture into one first");
    }
    size = static_cast<std::uint64_t>(info.st_size);
    return file;
}

}  // namespace

CaptureFile::CaptureFile(std::string path, Identifier identifier)
    : m_path(std::move(path)), m_file(OpenRegular(m_path, m_size)) {
    if (m_size == 0 && identifier != Identifier::None) {
        throw Failure(m_path, "the file is empty, there is no capture in it");
    }
    m_hasIdentifier = Read(0, kTDFIdentifier.size()) == kTDFIdentifier;
    if (!m_hasIdentifier && identifier == Identifier::Required) {
        throw Failure(m_path,
                      fmt::format("this is no capture: it does not begin with \"{}\"; if it was one, try recover",
                                  kTDFIdentifier));
    }
}

bool CaptureFile::IsEmpty(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && info.st_size == 0;
}

std::uint64_t CaptureFile::Held(std::uint64_t offset, std::uint64_t length) const {
    return std::min(length, m_size - std::min(m_size, offset));
}

std::size_t CaptureFile::ReadAt(std::uint64_t offset, char* buffer, std::size_t size) const {
    const auto count = m_file.ReadAt(offset, buffer, size);
    if (!count) {
        const int error = errno;
        throw Failure(m_path, fmt::format("the file can't be read at offset {}: {}", offset, ZU_WEP::ErrnoText(error)))
            .At(offset);
    }
    return *count;
}

std::string CaptureFile::Read(std::uint64_t offset, std::uint64_t length) const {
    std::string bytes(Held(offset, length), '\0');
    bytes.resize(ReadAt(offset, bytes.data(), bytes.size()));
    return bytes;
}

std::uint64_t CaptureFile::NextData(std::uint64_t offset) const { return Seek(offset, SEEK_DATA, offset); }

std::uint64_t CaptureFile::NextHole(std::uint64_t offset) const { return Seek(offset, SEEK_HOLE, m_size); }

/// Only this moves the descriptor's position, and nothing uses it. `otherwise` is for files that can't tell.
std::uint64_t CaptureFile::Seek(std::uint64_t offset, int whence, std::uint64_t otherwise) const {
    const off_t place = ::lseek(m_file.Descriptor(), static_cast<off_t>(offset), whence);
    if (place >= 0) {
        return std::min(static_cast<std::uint64_t>(place), m_size);
    }
    return errno == ENXIO ? m_size : otherwise;
}

}  // namespace stmdcm
