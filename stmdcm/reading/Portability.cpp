#include "stmdcm/reading/Portability.h"

#include <fmt/format.h>

#include "stmdcm/reading/ContainerCheck.h"

namespace stmdcm {

namespace {

/// What the capture leaves to the machine that reads it.
void TellUnset(Findings& findings) {
    const std::vector<Finding> others = findings.Sorted();
    for (const Finding& finding : others) {
        if (finding.kind == &Kind("T-NOT-SET")) {
            findings.Add(Kind("M-SETTINGS"), finding.place, finding.what,
                         "each is what the settings file of the CPU on the machine says, or else the default");
        }
    }
}

}  // namespace

void CheckPortability(Reading& reading, const std::function<bool(const ObjectFile&)>& isPinned) {
    if (reading.kind != ConfigurationKind::Capture) {
        return;
    }
    const Place place{kWantedSections[static_cast<std::size_t>(Wanted::Common)].name,
                      reading.hasObjectFiles ? std::optional(reading.readSections.front()) : std::nullopt};
    for (const ObjectFile& file : reading.configuration.objectFiles) {
        if (file.path.starts_with('/')) {
            reading.findings.Add(Kind("M-PATH"), place, fmt::format("{} of {}", Quoted(file.path), Quoted(file.name)),
                                 "is looked for at this very place; bring it there, or map it with stmdcm objects");
        }
        if (!isPinned(file)) {
            reading.findings.Add(Kind("M-NOT-PINNED"), place,
                                 fmt::format("nothing but path and time is known of {}", Quoted(file.name)),
                                 "nobody can tell whether a file of that name is the one that ran");
        }
    }
    TellUnset(reading.findings);
}

}  // namespace stmdcm
