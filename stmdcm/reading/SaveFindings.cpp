#include "stmdcm/reading/SaveFindings.h"

#include <fmt/format.h>

#include <algorithm>

#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"
#include "trace/format/UnfinishedSection.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

void SaveFindings::Take(const Section& section, std::string_view name) {
    if (section.use != SectionUse::Read && section.use != SectionUse::Shadowed) {
        return;
    }
    if (IsUnfinishedName(name)) {
        m_unfinished.push_back(&section);
    } else if (name == kCommonSectionName && section.version == kCommonSectionVersion) {
        m_images.push_back(&section);
    } else if (name == kStmSectionName && section.version == kStmSectionVersion) {
        (IsBehindUnfinished(section) ? m_lastSteps : m_settings).push_back(&section);
    }
}

bool SaveFindings::IsBehindUnfinished(const Section& settings) const {
    return !m_unfinished.empty() && m_unfinished.back()->End() == settings.offset;
}

void SaveFindings::Tell(bool isRowWhole, Findings& findings) const {
    TellUnfinished(findings);
    if (isRowWhole) {
        const std::size_t pairs = std::min(m_images.size(), m_settings.size());
        TellSurplus(m_images, kCommonSectionName, pairs, kStmSectionName, findings);
        TellSurplus(m_settings, kStmSectionName, pairs, kCommonSectionName, findings);
    }
    TellLater(findings);
}

void SaveFindings::TellUnfinished(Findings& findings) const {
    auto settings = m_lastSteps.begin();  // in the order of the file, as the others are
    for (const Section* section : m_unfinished) {
        settings = std::find_if(settings, m_lastSteps.end(),
                                [&](const Section* each) { return each->offset >= section->End(); });
        const bool isLastStep = settings != m_lastSteps.end() && (*settings)->offset == section->End();
        findings.Add(Kind("C-UNFINISHED"), {std::string(kUnfinishedName), section->offset},
                     isLastStep
                         ? fmt::format("a save was interrupted before this section became {}", kCommonSectionName)
                         : fmt::format("a save was interrupted; the {} of this section are what there is of it",
                                       Counted(section->length, "byte")),
                     isLastStep ? "passed over; the next save of a host completes it"
                                : "passed over; nothing of that save is read");
    }
}

/// `pairs`: how many of them have one of the other name.
void SaveFindings::TellSurplus(const Sections& some, std::string_view name, std::size_t pairs, std::string_view other,
                               Findings& findings) {
    for (std::size_t i = pairs; i < some.size(); ++i) {
        findings.Add(Kind("C-NO-PAIR"), {std::string(name), some[i]->offset},
                     fmt::format("there is no {} that was saved with it", other),
                     "taken on its own; a save that was interrupted leaves this");
    }
}

void SaveFindings::TellLater(Findings& findings) const {
    const Section* first = nullptr;
    const auto countShadowed = [&](const Sections& sections) {
        std::size_t count = 0;
        for (const Section* section : sections) {
            if (section->use == SectionUse::Shadowed) {
                ++count;
                first = first == nullptr || section->offset < first->offset ? section : first;
            }
        }
        return count;
    };
    const std::size_t images = countShadowed(m_images);
    const std::size_t count = std::max(images, countShadowed(m_settings) + countShadowed(m_lastSteps));
    if (count > 0) {
        findings.Add(Kind("C-LATER-SAVES"), {{}, first->offset},
                     fmt::format("{} {} not count: an earlier one is in force", Counted(count, "later save"),
                                 count == 1 ? "does" : "do"),
                     "the earlier one is read, whatever a host saves behind it");
    }
}

}  // namespace stmdcm
