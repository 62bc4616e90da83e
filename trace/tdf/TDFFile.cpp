#include "trace/tdf/TDFFile.h"

#include <fcntl.h>
#include <strings.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "trace/tdf/TDFError.h"

namespace Zu::Wep::Trace {

using ZU_WEP::PosixFile;

namespace {

using IdentifierBytes = std::array<char, kTDFIdentifier.size()>;

/// Of what was read, if it could be.
std::optional<bool> IsIdentifier(const IdentifierBytes& bytes, std::optional<std::size_t> count) {
    if (!count) {
        return std::nullopt;
    }
    return *count == bytes.size() && std::string_view(bytes.data(), bytes.size()) == kTDFIdentifier;
}

}  // namespace

bool HasExtension(const char* path, const char* extension) {
    if (path == nullptr || extension == nullptr) {
        return false;
    }
    const auto pathLength = static_cast<std::uint32_t>(std::strlen(path));
    const auto extensionLength = static_cast<std::uint32_t>(std::strlen(extension));
    if (pathLength <= extensionLength) {
        return false;
    }
    const char* tail = path + (pathLength - extensionLength);
    return tail[-1] == '.' && ::strcasecmp(tail, extension) == 0;
}

bool CanOpenForReading(const char* path) {
    return path != nullptr && *path != '\0' && PosixFile::OpenAtOnce(path, O_RDONLY).IsOpen();
}

std::optional<bool> ReadIdentifier(const PosixFile& file) {
    IdentifierBytes bytes{};
    return IsIdentifier(bytes, file.Read(bytes.data(), bytes.size()));
}

std::optional<bool> StillHasIdentifier(const PosixFile& file) {
    IdentifierBytes bytes{};
    return IsIdentifier(bytes, file.ReadAt(0, bytes.data(), bytes.size()));
}

void CheckPathToSave(const char* path) { TDFError::ThrowUnless(CanOpenForReading(path), TDFError::kSaveName); }

PosixFile OpenForUpdate(const char* path) {
    PosixFile file = PosixFile::OpenAtOnce(path, O_RDWR);
    TDFError::ThrowUnless(file.IsOpen(), TDFError::kOpen);
    return file;
}

PosixFile OpenForReading(const char* path) {
    PosixFile file = PosixFile::OpenAtOnce(path, O_RDONLY);
    TDFError::ThrowUnless(file.IsOpen(), TDFError::kOpen);
    TDFError::ThrowUnless(HasIdentifier(file), TDFError::kFormat);
    return file;
}

SectionInfo RequireSection(const PosixFile& file, const char* name, unsigned int version,
                           const std::string& notFoundText) {
    FileSectionSource source(file);
    SectionScanner scanner(source);
    SectionInfo section;
    const SectionKey wanted = KeyOf(name, version);
    if (!scanner.Find({&wanted, 1}, section)) {
        TDFError::Throw(notFoundText);
    }
    return section;
}

}  // namespace Zu::Wep::Trace
