#pragma once

// Appending behind the last section, as docs/tdf.md, "Saving", tells. Takes no lock: that is the caller's.

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "trace/format/SectionScanner.h"

namespace Zu::Wep::Trace {

/// Where an appended section goes.
struct ChainEnd {
    std::uint64_t offset = 0;  ///< can lie behind the end of the file, when the last section does
    bool reachable = false;    ///< whether a search comes to a section there
};

/// `stop` and `stopOffset` are those of a walk that has come to its end. Where no search passes all sections, the end
/// is that of the file.
ChainEnd FindChainEnd(SectionSource& source, ScanStop stop, std::uint64_t stopOffset, std::uint64_t fileSize);

enum class AppendResult {
    Done,
    TooLarge,     ///< it would end past MaxFileSize; not a byte was written
    WriteFailed,  ///< also for want of space, and past the process's file-size limit
    SyncFailed
};

/// Writes whole sections, `pieces`, at `offset`, a gap in front of it included, and syncs them. After a failure the
/// file has its old size and bytes again, unless somebody else has made it longer still, and `errno` tells the reason,
/// but for TooLarge.
AppendResult AppendAt(const ZU_WEP::PosixFile& file, std::uint64_t fileSize, std::uint64_t offset,
                      std::initializer_list<std::string_view> pieces);

}  // namespace Zu::Wep::Trace
