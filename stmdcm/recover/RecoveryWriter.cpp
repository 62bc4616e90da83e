#include "stmdcm/recover/RecoveryWriter.h"

#include "trace/format/SectionLayout.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

void WriteRecovery(const CaptureFile& from, const RecoveryPlan& plan, ByteSink& to, const OnCopied& onCopied) {
    std::uint64_t done = 0;
    const auto copy = [&](std::uint64_t offset, std::uint64_t length) {
        CopyRange(from, offset, length, to, [&](std::uint64_t count) { onCopied(done + count); });
        done += length;
    };
    to.Write(TDFIdentifier);
    for (const RecoveryPlan::Extent& extent : plan.whole) {
        copy(extent.offset, extent.length);
    }
    for (const auto& [section, length] : plan.repaired) {
        to.Write(EncodeSectionHeader({length, section.version, section.nameLength}));
        copy(section.offset + SectionHeader::Size, length - SectionHeader::Size);
    }
    for (const RecoveryPlan::Extent& extent : plan.overLimit) {
        copy(extent.offset, extent.length);
    }
}

}  // namespace stmdcm
