#include "source_utilities/uFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace ZU_WEP {

namespace {

/// Where the host has closed a standard stream, what anybody prints would land in the file. It stays if no other
/// descriptor is free.
std::FILE* OffStandardStreams(std::FILE* stream, const char* flags) {
    if (stream == nullptr || ::fileno(stream) > STDERR_FILENO) {
        return stream;
    }
    const int other = ::fcntl(::fileno(stream), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    std::FILE* const moved = other < 0 ? nullptr : ::fdopen(other, flags);
    if (moved == nullptr) {
        if (other >= 0) {
            ::close(other);
        }
        return stream;
    }
    std::fclose(stream);
    return moved;
}

std::FILE* OpenCloseOnExec(const char* path, const char* mode) {
    std::string flags = mode == nullptr || *mode == '\0' ? "r" : mode;
    flags.insert(1, "e");  // a ",ccs=" takes all that stands behind it
    std::FILE* stream = nullptr;
    do {
        stream = std::fopen(path, flags.c_str());
    } while (stream == nullptr && errno == EINTR);
    return OffStandardStreams(stream, flags.c_str());
}

}  // namespace

uFile::uFile(const char* path, const char* mode) : m_path(path == nullptr ? "" : path), m_openMode(mode) {}

uFile::~uFile() {
    if (m_stream != nullptr) {
        std::fclose(m_stream);
    }
}

template <typename Operation>
auto uFile::WithStream(Operation operation) -> decltype(operation(nullptr)) {
    const uMutex::Guard guard(m_lock);
    if (m_stream == nullptr) {
        return {};
    }
    return operation(m_stream);
}

bool uFile::OpenStream(const char* mode) {
    Close();
    m_stream = OpenCloseOnExec(m_path.c_str(), mode);
    m_open = m_stream != nullptr;
    struct stat info {};
    m_isRegular = m_open && ::fstat(::fileno(m_stream), &info) == 0 && S_ISREG(info.st_mode);
    return m_open;
}

bool uFile::Open(const char* path, const char* mode) {
    const uMutex::Guard guard(m_lock);
    m_path = path == nullptr ? "" : path;
    m_openMode = mode;
    return OpenStream(mode);
}

bool uFile::Open() {
    const uMutex::Guard guard(m_lock);
    if (m_path.empty() || m_openMode == nullptr || *m_openMode == '\0') {
        return false;
    }
    return OpenStream(m_openMode);
}

bool uFile::Close() {
    return WithStream([this](std::FILE* stream) {
        m_stream = nullptr;
        m_open = std::fclose(stream) != 0;  // IsOpen tells a failed close (uFile.h)
        return true;
    });
}

bool uFile::Erase() {
    return WithStream([this](std::FILE*) {
        if (m_path.empty()) {
            return false;
        }
        const bool wasOpen = m_open;
        const bool erased = OpenStream("w");
        Close();
        return wasOpen ? OpenStream(m_openMode) && erased : erased;
    });
}

std::size_t uFile::Write(const void* data, std::size_t size) {
    return WithStream([=](std::FILE* stream) { return std::fwrite(data, 1, size, stream); });
}

std::size_t uFile::Read(void* data, std::size_t size) {
    return WithStream([=](std::FILE* stream) { return std::fread(data, 1, size, stream); });
}

bool uFile::WriteString(const char* text) {
    return WithStream([=](std::FILE* stream) { return std::fputs(text, stream) >= 0; });
}

bool uFile::ReadString(char* buffer, std::size_t size) {
    const int limit = static_cast<int>(std::min<std::size_t>(size, INT_MAX));
    return WithStream([=](std::FILE* stream) { return std::fgets(buffer, limit, stream) != nullptr; });
}

int uFile::Printf(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    const int written = WithStream([&](std::FILE* stream) { return std::vfprintf(stream, format, args); });
    va_end(args);
    return written;
}

bool uFile::Flush() {
    return WithStream([](std::FILE* stream) { return std::fflush(stream) == 0; });
}

bool uFile::WriteThrough(const void* data, std::size_t size) {
    return WithStream([=](std::FILE* stream) {
        const bool isTaken = std::fwrite(data, 1, size, stream) == size;
        return std::fflush(stream) == 0 && isTaken;
    });
}

bool uFile::SeekToBegin() {
    return WithStream([](std::FILE* stream) {
        std::rewind(stream);
        return true;
    });
}

bool uFile::SeekToEnd() {
    return WithStream([](std::FILE* stream) { return std::fseek(stream, 0, SEEK_END) == 0; });
}

bool uFile::GetPosition(std::fpos_t* position) {
    return WithStream([=](std::FILE* stream) { return std::fgetpos(stream, position) == 0; });
}

bool uFile::SetPosition(const std::fpos_t* position) {
    return WithStream([=](std::FILE* stream) { return std::fsetpos(stream, position) == 0; });
}

std::size_t uFile::GetSize() {
    return WithStream([](std::FILE* stream) -> std::size_t {
        const off_t here = ftello(stream);
        if (here < 0 || fseeko(stream, 0, SEEK_END) != 0) {
            return 0;
        }
        const off_t end = ftello(stream);
        const bool restored = fseeko(stream, here, SEEK_SET) == 0;
        return restored && end >= here ? static_cast<std::size_t>(end - here) : 0;
    });
}

bool uFile::IsEof() {
    return WithStream([](std::FILE* stream) { return std::feof(stream) != 0; });
}

bool uFile::IsError() {
    return !WithStream([](std::FILE* stream) { return std::ferror(stream) == 0; });
}

bool uFile::ClearError() {
    return WithStream([](std::FILE* stream) {
        std::clearerr(stream);
        return true;
    });
}

}  // namespace ZU_WEP
