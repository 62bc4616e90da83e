#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stmdcm/change/History.h"

namespace stmdcm {

enum class UndoDirection : std::uint8_t { Undo, Redo };

/// What an undone change, or one that was brought back, has left.
struct UndoResult {
    std::vector<HistoryEntry> restored = {};  ///< DCM_COMMON first; empty: it is as asked already
    std::vector<Difference> changes = {};     ///< left as it was until now, right as it is to be
    std::vector<std::string> doubts = {};     ///< as of RestoreResult
    bool isWritten = false;
};

/// Puts in force what was in force before the last change of the configuration, as RestoreConfiguration does: of one
/// section, or of both where one change replaced both. Redo brings the change back. What is as asked already stays, and
/// what an interrupted undo has left is finished, so doing it once more changes nothing. Throws Failure where what is
/// in force has no predecessor.
UndoResult UndoLastChange(const std::string& path, UndoDirection direction, ChangeMode mode = ChangeMode::Write);

}  // namespace stmdcm
