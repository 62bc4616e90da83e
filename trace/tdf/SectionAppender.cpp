#include "trace/tdf/SectionAppender.h"

#include <cerrno>
#include <cstdint>
#include <string>

#include "source_utilities/Log.h"
#include "source_utilities/PosixFile.h"
#include "trace/format/SectionScanner.h"
#include "trace/tdf/ChainEnd.h"
#include "trace/tdf/TDFError.h"
#include "trace/tdf/TDFFile.h"

namespace Zu::Wep::Trace {

using TDFError::ThrowUnless;
using ZU_WEP::PosixFile;

namespace {

ChainEnd WalkToChainEnd(const PosixFile& file, const char* path, std::uint64_t fileSize) {
    FileSectionSource source(file);
    SectionScanner scanner(source);
    SectionInfo section;
    while (scanner.Next(section)) {
    }
    const ChainEnd end = FindChainEnd(source, scanner.Stop(), scanner.StopOffset(), fileSize);
    if (!end.reachable) {
        ZU_WEP::Log(ZU_WEP::LogError, "%s: no section behind offset %llu can be found: %s", path,
                    static_cast<unsigned long long>(scanner.StopOffset()), ScanStopText(scanner.Stop()));
    }
    return end;
}

void Append(const PosixFile& file, const char* path, std::string_view name, unsigned int version,
            std::string_view payload) {
    const std::uint64_t fileSize = file.Size().value_or(0);
    ThrowUnless(fileSize >= FirstSectionOffset, TDFError::HeaderOffset);
    const ChainEnd end = WalkToChainEnd(file, path, fileSize);
    // A length that has wrapped around is of a section that is refused as too large.
    const auto length = static_cast<std::uint32_t>(SectionHeader::Size + name.size() + payload.size());
    const AppendResult result =
        AppendAt(file, fileSize, end.offset, {EncodeSectionStart(length, name, version), payload});
    ThrowUnless(result != AppendResult::TooLarge, TDFError::HeaderOffset);
    if (result != AppendResult::Done) {
        const int error = errno;
        const char* failure = result == AppendResult::SyncFailed ? TDFError::WriteCorrupted : TDFError::WriteData;
        ZU_WEP::Log(ZU_WEP::LogError, "%s: %s %s", path, failure, ZU_WEP::ErrnoText(error).c_str());
        TDFError::Throw(failure);
    }
}

}  // namespace

void AppendSection(const char* path, const char* name, unsigned int version, std::string_view payload,
                   ZU_WEP::LockPatience& patience) {
    CheckPathToSave(path);
    PosixFile file = OpenForUpdate(path);
    {
        const bool isTold = patience.hasRunOut;
        const ZU_WEP::FileLock lock(file, patience);
        if (patience.hasRunOut && !isTold) {
            ZU_WEP::Log(ZU_WEP::LogUnexpected, "%s: another holds its lock and does not let go, saving without it",
                        path);
        }
        Append(file, path, name != nullptr ? name : "", version, payload);
    }
    ThrowUnless(file.Close(), TDFError::WriteCorrupted);
}

void AppendSection(const char* path, const char* name, unsigned int version, std::string_view payload) {
    ZU_WEP::LockPatience patience;
    AppendSection(path, name, version, payload, patience);
}

}  // namespace Zu::Wep::Trace
