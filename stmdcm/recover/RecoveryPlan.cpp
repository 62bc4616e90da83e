#include "stmdcm/recover/RecoveryPlan.h"

#include "trace/format/SectionLayout.h"

namespace stmdcm {

std::uint64_t RecoveryPlan::ResultSize() const {
    std::uint64_t size = Zu::Wep::Trace::FirstSectionOffset;
    for (const auto* extents : {&whole, &overLimit}) {
        for (const Extent& extent : *extents) {
            size += extent.length;
        }
    }
    for (const Repair& repair : repaired) {
        size += repair.length;
    }
    return size;
}

}  // namespace stmdcm
