#include "tool/reports/UndoReport.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "stmdcm/reading/Words.h"
#include "tool/reports/ChangeReport.h"

namespace stmdcm {

std::string UndoReport::Text(const Palette& palette) const {
    if (!HasChanges()) {
        return fmt::format("{}: {}\n", Shown(file),
                           direction == UndoDirection::Redo
                               ? "the last change is in force already, nothing was written"
                               : "the last change is undone already, nothing was written; undo --redo brings it "
                                 "back, restore goes further back");
    }
    std::vector<std::string> names;
    for (const HistoryEntry& entry : result.restored) {
        names.push_back(fmt::format("configuration {} ({})", entry.number, entry.name));
    }
    const bool isOne = names.size() == 1;
    const char* outcome =
        result.isWritten ? (isOne ? "is in force again" : "are in force again") : "would be in force again";
    return fmt::format("{}: {} {}\n", Shown(file), fmt::join(names, " and "), outcome) +
           ChangeReport::Changes(result.changes, palette);
}

Json UndoReport::Document() const {
    Json restored = Json::array();
    for (const HistoryEntry& entry : result.restored) {
        restored.push_back({{"number", entry.number}, {"section", entry.name}});
    }
    return JsonRenderer::Document("undo", {{"file", file},
                                           {"restored", restored},
                                           {"changed", HasChanges()},
                                           {"changes", JsonRenderer::Differences(result.changes)},
                                           {"written", result.isWritten},
                                           {"doubts", result.doubts}});
}

}  // namespace stmdcm
