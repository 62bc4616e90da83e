#include "trace/tdf/SectionAppender.h"

#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>

#include "source_utilities/Log.h"
#include "source_utilities/PosixFile.h"
#include "trace/tdf/SectionScanner.h"
#include "trace/tdf/TDFError.h"
#include "trace/tdf/TDFFile.h"

namespace Zu::Wep::Trace {

using TDFError::ThrowUnless;
using ZU_WEP::PosixFile;

namespace {

/// The stated end of a section whose header the end of the file cuts off, when that lies behind the end of the file.
std::optional<std::uint64_t> EndOfTornSection(FileSectionSource& source, std::uint64_t offset, std::uint64_t fileSize) {
    char bytes[SectionHeader::LengthSize];
    if (source.ReadAt(offset + SectionHeader::LengthOffset, bytes, sizeof bytes) != sizeof bytes) {
        return std::nullopt;
    }
    const std::uint32_t length = DecodeSectionLength(bytes);
    if (length > MaxSectionLength || offset + length <= fileSize) {
        return std::nullopt;
    }
    return offset + length;
}

/// Where a search comes to when it passes all sections, which can lie behind the end of the file; where no search
/// passes them all, the end of the file.
std::uint64_t EndOfChain(const PosixFile& file, const char* path, std::uint64_t fileSize) {
    FileSectionSource source(file);
    SectionScanner scanner(source);
    SectionInfo section;
    while (scanner.Next(section)) {
    }
    if (scanner.Stop() == ScanStop::EndOfFile) {
        return scanner.StopOffset();
    }
    if (scanner.Stop() == ScanStop::TornHeader) {
        if (const auto end = EndOfTornSection(source, scanner.StopOffset(), fileSize)) {
            return *end;
        }
    }
    ZU_WEP::Log(ZU_WEP::LogError, "%s: no section behind offset %llu can be found: %s", path,
                static_cast<unsigned long long>(scanner.StopOffset()), ScanStopText(scanner.Stop()));
    return fileSize;
}

/// Writes the whole section; gives the text of the step that failed.
const char* Write(const PosixFile& file, std::uint64_t offset, std::string_view start, std::string_view payload) {
    if (!file.Reserve(offset, start.size() + payload.size()) || !file.WriteAt(offset, {start, payload})) {
        return TDFError::WriteData;
    }
    return file.SyncData() ? nullptr : TDFError::WriteCorrupted;
}

void AppendLocked(const PosixFile& file, const char* path, std::string_view name, unsigned int version,
                  std::string_view payload) {
    const std::uint64_t fileSize = file.Size().value_or(0);
    ThrowUnless(fileSize >= FirstSectionOffset, TDFError::HeaderOffset);
    // A gap in front of the offset is filled by the same write, so no kill can leave it alone.
    const std::uint64_t offset = EndOfChain(file, path, fileSize);
    const std::uint64_t startSize = SectionHeader::Size + name.size();
    ThrowUnless(offset <= MaxFileSize && startSize <= MaxFileSize - offset &&
                    payload.size() <= MaxFileSize - offset - startSize,
                TDFError::HeaderOffset);

    const auto length = static_cast<std::uint32_t>(startSize + payload.size());
    if (const char* failure = Write(file, offset, EncodeSectionStart(length, name, version), payload)) {
        const int error = errno;
        file.Truncate(fileSize);
        ZU_WEP::Log(ZU_WEP::LogError, "%s: %s %s", path, failure, ZU_WEP::ErrnoText(error).c_str());
        TDFError::Throw(failure);
    }
}

}  // namespace

void AppendSection(const char* path, const char* name, unsigned int version, std::string_view payload) {
    CheckPathToSave(path);
    PosixFile file = OpenForUpdate(path);
    {
        const ZU_WEP::FileLock lock(file);
        AppendLocked(file, path, name != nullptr ? name : "", version, payload);
    }
    ThrowUnless(file.Close(), TDFError::WriteCorrupted);
}

}  // namespace Zu::Wep::Trace
