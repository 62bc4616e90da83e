#include "stmdcm/recover/InnerSections.h"

#include <algorithm>

#include "trace/format/SectionLayout.h"

namespace stmdcm {

using Zu::Wep::Trace::kFirstSectionOffset;
using Zu::Wep::Trace::kTDFIdentifier;
using Zu::Wep::Trace::SectionHeader;

void InnerSections::Tell(const Section& section, std::uint64_t end, bool isChainWhole, const OnFound& onFound) {
    std::uint64_t behind = end;  // the last one: there the next may begin, also one with a name that no search finds
    for (std::uint64_t from = section.offset + SectionHeader::kSize; from < end;) {
        const std::uint64_t place = m_search.Find(from, behind, [&](std::uint64_t offset) {
            m_onProgress(offset);
            return isChainWhole ? m_rules.IsInner(offset, end) : m_rules.MayBeInner(offset);
        });
        if (place == end) {
            return;
        }
        const auto inner = m_rules.HeaderAt(place);
        const bool follows = place == behind && inner && m_rules.IsWhole(*inner) && inner->End() <= end;
        if (place == behind && !follows) {
            from = place;
            behind = end;
            continue;
        }
        onFound(*inner);
        from = IsCapture(*inner, inner->End()) ? inner->End() : place + SectionHeader::kSize;
        behind = inner->End() > from ? std::min(inner->End(), behind > from ? behind : end) : end;
    }
}

bool InnerSections::IsCapture(const Section& section, std::uint64_t end) const {
    const std::uint64_t payload = section.PayloadOffset();
    return m_file.Read(payload, kTDFIdentifier.size()) == kTDFIdentifier &&
           m_rules.LeadsTo(payload + kFirstSectionOffset, end);
}

}  // namespace stmdcm
