#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "source_utilities/PosixFile.h"

namespace Zu::Wep::Trace {

/// What a disk writes whole; more than that a loss of power can tear.
inline constexpr std::uint64_t kSectorSize = 512;

enum class AppendResult {
    Done,
    HasGrown,     ///< the file has not the size that was stated: another has written meanwhile; not a byte was written
    TooLarge,     ///< it would end past kMaxFileSize; not a byte was written
    WriteFailed,  ///< also for want of space, and past the process's file-size limit
    SyncFailed
};

/// Writes sections at `offset` and syncs them, a gap in front of them included. One piece is written at once. Of
/// several the first states a length that spans them all, and is stored over zeros before the others take the zeros'
/// place: so a search passes them, whichever sectors a loss of power leaves. `offset` is in front of the end of the
/// file where zeros lie behind it. After a failure the file is cut back as CutBack tells, and `errno` tells the reason,
/// but for TooLarge.
AppendResult AppendAt(const ZU_WEP::PosixFile& file, std::uint64_t fileSize, std::uint64_t offset,
                      std::initializer_list<std::string_view> pieces);

/// Gives the file the old size and bytes again, of which `written` bytes at `offset` are new; false, and nothing done,
/// where its size tells that another has written behind them. Keeps `errno`.
bool CutBack(const ZU_WEP::PosixFile& file, std::uint64_t fileSize, std::uint64_t offset, std::uint64_t written);

}  // namespace Zu::Wep::Trace
