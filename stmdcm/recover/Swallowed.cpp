#include "stmdcm/recover/Swallowed.h"

#include <algorithm>

#include "stmdcm/recover/HeaderRules.h"
#include "stmdcm/recover/InnerSections.h"
#include "trace/format/ObjectFileSection.h"

namespace stmdcm {

using Zu::Wep::Trace::kCommonSectionName;

std::vector<std::uint64_t> SwallowedSections(const Container& capture, std::vector<std::string> names) {
    const HeaderRules rules(capture.File());
    const InnerSections::OnProgress noProgress = [](std::uint64_t) {};
    InnerSections inner(capture.File(), rules, noProgress);
    std::vector<std::uint64_t> offsets;
    const auto take = [&](const Section& section) {
        const auto name = std::find(names.begin(), names.end(), rules.NameOf(section));
        const bool isOfUse = name != names.end() && (*name == kCommonSectionName || !section.IsEmpty());
        if (isOfUse && section.version == kWantedVersion) {
            names.erase(name);
            offsets.push_back(section.offset);
        }
    };
    for (const Section& section : capture.Sections()) {
        if (!names.empty() && rules.IsWhole(section) && !inner.IsCapture(section, section.End())) {
            inner.Tell(section, section.End(), true, take);
        }
    }
    return names.empty() ? offsets : std::vector<std::uint64_t>{};
}

}  // namespace stmdcm
