#include "stmdcm/capture/SectionRuns.h"

#include <utility>

#include "trace/format/RetiredSection.h"

namespace stmdcm {

using Zu::Wep::Trace::LiveVersion;

std::string SectionRuns::Stem(std::string name) {
    name.erase(name.find_last_not_of("0123456789") + 1);
    return name;
}

SectionRuns::SectionRuns(const Container& container) {
    const std::vector<Section>& sections = container.Sections();
    std::string lastStem;
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const Section& section = sections[i];
        std::string stem = Stem(container.Name(section));
        const Section* last = i > 0 ? &sections[i - 1] : nullptr;
        if (last != nullptr && LiveVersion(last->version) == LiveVersion(section.version) && last->use == section.use &&
            stem == lastStem && !last->IsTooShort() && !section.IsTooShort() && !container.IsTorn(section)) {
            ++m_runs.back().count;
        } else {
            m_runs.push_back({i, 1});
        }
        lastStem = std::move(stem);
    }
}

}  // namespace stmdcm
