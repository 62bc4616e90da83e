#pragma once

#include <optional>
#include <string>
#include <vector>

#include "stmdcm/capture/Container.h"
#include "stmdcm/change/History.h"
#include "stmdcm/change/Prune.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// An entry and in what it differs from the one in force.
struct HistoryRow {
    const HistoryEntry& entry;
    std::optional<std::vector<Difference>> differences;

    std::string Words() const;
    Json Document() const;
};

/// Tells the configurations that a file holds.
struct HistoryReport {
    const std::string& file;
    std::vector<HistoryRow> rows;
    std::vector<std::string> doubts;
    std::optional<PrunePlan> prune = {};  ///< where that was asked for
    std::string output = {};              ///< where the rest was copied to; empty: nowhere

    /// Borrows both, and the name.
    static HistoryReport Of(const std::string& file, const Container& container, const History& history);

    std::string Text(const Palette& palette) const;
    Json Document() const;

  private:
    bool IsDropped(const HistoryEntry& entry) const;
    const char* State(const HistoryRow& row) const { return IsDropped(row.entry) ? "pruned" : row.entry.State(); }
    std::string PruneText() const;
    Json PruneDocument() const;
};

}  // namespace stmdcm
