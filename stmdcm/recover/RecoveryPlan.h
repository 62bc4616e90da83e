#pragma once

#include <cstdint>
#include <vector>

#include "stmdcm/capture/Container.h"
#include "stmdcm/recover/Remarks.h"
#include "trace/format/SectionLayout.h"

namespace stmdcm {

/// What of a damaged capture goes into the new one, in this order: sections that are whole, in their old order; those
/// whose length had to be corrected, so that none of them is read where a whole one could be; those that no search
/// passes, so that nothing is behind them.
struct RecoveryPlan {
    /// Whole sections that follow each other.
    struct Extent {
        std::uint64_t offset;
        std::uint64_t length;
    };
    struct Repair {
        Section section;
        std::uint32_t length;  ///< what it should have stated
    };

    std::vector<Extent> whole;
    std::vector<Repair> repaired;
    std::vector<Extent> overLimit;
    std::uint64_t wholeCount = 0;  ///< sections in `whole` and `overLimit`
    std::uint64_t keptBytes = 0;   ///< of all these sections, as they are in the result
    std::uint64_t droppedBytes = 0;
    Remarks remarks;

    std::uint64_t SectionCount() const { return wholeCount + repaired.size(); }
    std::uint64_t ResultSize() const { return Zu::Wep::Trace::kFirstSectionOffset + keptBytes; }
    /// Nothing was lost and nothing is doubtful.
    bool IsGood() const { return remarks.DoubtCount() == 0; }
};

}  // namespace stmdcm
