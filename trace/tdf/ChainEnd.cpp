#include "trace/tdf/ChainEnd.h"

#include <cerrno>
#include <optional>

namespace Zu::Wep::Trace {

namespace {

/// The stated end of a section whose header or name the end of the file cuts off, when that lies behind the end of the
/// file. Filled up with zeros, header and name must end there, too: what is put behind would become part of them.
std::optional<std::uint64_t> EndOfTornSection(SectionSource& source, std::uint64_t offset, std::uint64_t fileSize) {
    char bytes[SectionHeader::Size] = {};
    const auto held = source.ReadAt(offset, bytes, sizeof bytes);
    if (!held || *held < SectionHeader::LengthSize) {
        return std::nullopt;
    }
    const SectionHeader header = DecodeSectionHeader(bytes);
    const bool coversName = header.length >= SectionHeader::Size &&
                            header.nameLength <= header.length - SectionHeader::Size &&
                            header.nameLength <= MaxNameLength;
    if (!coversName || header.length > MaxSectionLength || offset + header.length <= fileSize) {
        return std::nullopt;
    }
    return offset + header.length;
}

}  // namespace

ChainEnd FindChainEnd(SectionSource& source, ScanStop stop, std::uint64_t stopOffset, std::uint64_t fileSize) {
    if (stop == ScanStop::EndOfFile) {
        return {stopOffset, true};
    }
    if (stop == ScanStop::TornHeader) {
        if (const auto end = EndOfTornSection(source, stopOffset, fileSize)) {
            return {*end, true};
        }
    }
    return {fileSize, false};
}

AppendResult AppendAt(const ZU_WEP::PosixFile& file, std::uint64_t fileSize, std::uint64_t offset,
                      std::initializer_list<std::string_view> pieces) {
    std::uint64_t size = 0;
    for (const std::string_view piece : pieces) {
        size += piece.size();
    }
    if (offset > MaxFileSize || size > MaxFileSize - offset) {
        return AppendResult::TooLarge;
    }
    // A gap in front of the offset is filled by the same write, so no kill can leave it alone.
    const bool written = file.Reserve(offset, size) && file.WriteAt(offset, pieces);
    if (written && file.SyncData()) {
        return AppendResult::Done;
    }
    const int error = errno;
    if (file.Size().value_or(0) <= offset + size) {  // else another has written behind it, without the lock
        file.Truncate(fileSize);
    }
    errno = error;
    return written ? AppendResult::SyncFailed : AppendResult::WriteFailed;
}

}  // namespace Zu::Wep::Trace
