#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "stmdcm/capture/CopyRange.h"
#include "stmdcm/change/History.h"

namespace stmdcm {

/// A capture without its older configurations: which go, and what of the file stays.
struct PrunePlan {
    std::vector<HistoryEntry> dropped;
    std::size_t droppedPins = 0;                                ///< sections IMAGE_PINS, which are no configuration
    std::uint64_t freed = 0;                                    ///< bytes
    std::vector<std::pair<std::uint64_t, std::uint64_t>> kept;  ///< offset and length, in order

    std::uint64_t Size() const;
};

/// Of the configurations that were in force, and of the old pins, the `keep` youngest of each name stay; what was
/// retired without having been in force goes; all else stays. Throws Failure for a capture in which a search can't pass
/// every section: nobody knows what would be found in the copy.
PrunePlan PlanPrune(const Container& container, const History& history, std::size_t keep);

/// Writes what stays. Throws Failure, also when another has changed the capture meanwhile.
void CopyPruned(const Container& container, const PrunePlan& plan, ByteSink& to, const OnCopied& onCopied);

}  // namespace stmdcm
