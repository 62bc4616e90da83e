#include "stmdcm/capture/ChangeNumber.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

#include "trace/format/ObjectFileSection.h"
#include "trace/format/RetiredSection.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

std::uint32_t RetiredVersion(const Section& section, ChangeMark mark) {
    if (section.use != SectionUse::Read) {
        return NeverInForce(section.version, mark.number);
    }
    return mark.isUndo ? Undone(section.version, mark.number) : Retired(section.version, mark.number);
}

std::uint32_t NextChangeNumber(const Container& capture) {
    std::uint32_t number = 0;
    std::array<std::uint32_t, 4> taken{};  // the last two of each name
    for (const Section& section : capture.Sections()) {
        if (section.use != SectionUse::Retired || !WasInForce(section.version) || ChangeNumber(section.version) == 0) {
            continue;
        }
        number = ChangeNumber(section.version);
        if (capture.IsOrWas(section, kCommonSection.name, kCommonSection.version)) {
            std::tie(taken[0], taken[1]) = std::pair(taken[1], number);
        } else if (capture.IsOrWas(section, kStmSection.name, kStmSection.version)) {
            std::tie(taken[2], taken[3]) = std::pair(taken[3], number);
        }
    }
    do {
        number = number % kLastChangeNumber + 1;
    } while (std::find(taken.begin(), taken.end(), number) != taken.end());
    return number;
}

}  // namespace stmdcm
