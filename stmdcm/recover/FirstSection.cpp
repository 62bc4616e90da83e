#include "stmdcm/recover/FirstSection.h"

#include <functional>
#include <iterator>

#include "trace/format/SectionLayout.h"

namespace stmdcm {

using Zu::Wep::Trace::kFirstSectionOffset;

namespace {

/// Behind an identifier that was overwritten, without one, and with a part of one.
constexpr std::uint64_t kPlaces[] = {kFirstSectionOffset, 0, 3, 2, 1};
static_assert(std::size(kPlaces) == kFirstSectionOffset + 1);

}  // namespace

std::uint64_t FirstSection(const CaptureFile& file, const HeaderRules& rules) {
    if (file.HasIdentifier()) {
        return kFirstSectionOffset;
    }
    // The surest sign first, at every place.
    const std::function<bool(std::uint64_t)> isFirst[] = {
        [&](std::uint64_t place) { return rules.LeadsTo(place, file.Size()); },
        [&](std::uint64_t place) { return rules.IsFound(place); },
        [&](std::uint64_t place) {
            const auto section = rules.HeaderAt(place);
            return section && rules.IsWhole(*section) && rules.MayEndAt(section->End());
        },
        [&](std::uint64_t place) {
            const auto section = rules.HeaderAt(place);
            return section && IsPlausibleName(rules.NameOf(*section));
        }};
    for (const auto& isHere : isFirst) {
        for (const std::uint64_t place : kPlaces) {
            if (isHere(place)) {
                return place;
            }
        }
    }
    return 0;
}

}  // namespace stmdcm
