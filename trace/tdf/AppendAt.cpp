#include "trace/tdf/AppendAt.h"

#include <algorithm>
#include <cerrno>
#include <string>

#include "trace/format/SectionLayout.h"

namespace Zu::Wep::Trace {

namespace {

/// What lies within one sector is written whole or not at all.
bool IsWithinSector(std::uint64_t offset, std::uint64_t size) {
    return offset / kSectorSize == (offset + size - 1) / kSectorSize;
}

/// Where zeros were before: only over what was written, as others may write behind it, too. Takes no memory.
void PutZeros(const ZU_WEP::PosixFile& file, std::uint64_t offset, std::uint64_t size) {
    static constexpr char kZeros[4096]{};
    while (size > 0 && file.WriteAt(offset, {std::string_view(kZeros, std::min<std::uint64_t>(size, sizeof kZeros))})) {
        offset += std::min<std::uint64_t>(size, sizeof kZeros);
        size -= std::min<std::uint64_t>(size, sizeof kZeros);
    }
}

}  // namespace

AppendResult AppendAt(const ZU_WEP::PosixFile& file, std::uint64_t fileSize, std::uint64_t offset,
                      std::initializer_list<std::string_view> pieces) {
    std::uint64_t size = 0;
    for (const std::string_view piece : pieces) {
        size += piece.size();
    }
    if (offset > kMaxFileSize || size > kMaxFileSize - offset) {
        return AppendResult::TooLarge;
    }
    if (file.Size() != fileSize) {
        errno = EAGAIN;
        return AppendResult::HasGrown;
    }
    std::uint64_t done = 0;
    AppendResult result = AppendResult::WriteFailed;
    const auto isStored = [&](std::initializer_list<std::string_view> all) {
        std::uint64_t written = 0;
        const bool isWritten = file.WriteAt(offset, all, &written);
        done = std::max(done, written);
        result =
            !isWritten ? AppendResult::WriteFailed : (file.SyncData() ? AppendResult::Done : AppendResult::SyncFailed);
        return result == AppendResult::Done;
    };
    const std::string_view start = *pieces.begin();
    const bool isOneWrite = pieces.size() == 1 || IsWithinSector(offset, size);
    const std::string zeros(isOneWrite ? 0 : size - start.size(), '\0');  // behind this nothing asks for memory
    // A gap in front of the offset is filled by the same write, so no kill can leave it alone.
    if (file.Reserve(offset, size) && (isOneWrite || isStored({start, zeros})) && isStored(pieces)) {
        return AppendResult::Done;
    }
    const int error = errno;
    if (!CutBack(file, fileSize, offset, done) && done < size && done >= SectionHeader::kSize) {
        file.WriteAt(offset, {EncodeSectionLength(static_cast<std::uint32_t>(done))});  // what is behind is another's
    }
    errno = error;
    return result;
}

bool CutBack(const ZU_WEP::PosixFile& file, std::uint64_t fileSize, std::uint64_t offset, std::uint64_t written) {
    const int error = errno;
    const bool isOurs = file.Size() == std::max(fileSize, written > 0 ? offset + written : 0);
    if (isOurs && offset < fileSize) {
        PutZeros(file, offset, std::min(written, fileSize - offset));
    }
    if (isOurs && (offset >= fileSize || offset + written > fileSize)) {
        file.Truncate(fileSize);
    }
    errno = error;
    return isOurs;
}

}  // namespace Zu::Wep::Trace
