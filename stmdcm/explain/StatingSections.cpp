#include "stmdcm/explain/StatingSections.h"

#include <fmt/format.h>

#include <algorithm>

#include "stmdcm/change/History.h"
#include "stmdcm/pins/PinSection.h"
#include "stmdcm/reading/Reading.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// What states something, and when it is read.
constexpr struct {
    const char* name;
    std::uint32_t version;
    const char* reading;
} kStating[] = {
    {kCommonSectionName, kCommonSectionVersion, "read first by a load"},
    {kDeviceSectionName, kDeviceSectionVersion, "read by a load before STMDECODERINFO"},
    {kStmSectionName, kStmSectionVersion, "read last by a load"},
    {kPinSectionName, kPinSectionVersion, "read by stmdcm alone"},
};

std::string Why(const Container& capture, const Section& section, const auto& stating) {
    switch (section.use) {
        case SectionUse::Read:
            return stating.reading;
        case SectionUse::Shadowed:
            return fmt::format("an older {} is read", stating.name);
        case SectionUse::Retired:
            return "a change took it out of use";
        case SectionUse::Unreachable:
            break;
    }
    return fmt::format("a search ends in front of it, at {}", capture.StopOffset());
}

}  // namespace

StatingFile::StatingFile(const std::string& path) {
    if (KindOf(path) == ConfigurationKind::Settings) {
        const CaptureFile file(path, CaptureFile::Identifier::Optional);
        limits = kFileLineLimits;
        settings = kSettingsFile;
        sections.push_back({kSettingsFile, {}, file.Read(0, kMaxSettingsFileSize), true, "read by a load"});
        return;
    }
    settings = kStmSectionName;
    const Container capture(path);
    const History history(capture);
    const auto& entries = history.Entries();
    for (const Section& section : capture.Sections()) {
        for (const auto& stating : kStating) {
            if (capture.IsOrWas(section, stating.name, stating.version)) {
                const auto entry = std::find_if(entries.begin(), entries.end(), [&](const HistoryEntry& each) {
                    return each.section.offset == section.offset && !each.IsCurrent();
                });
                sections.push_back(
                    {stating.name,
                     {stating.name, section.offset},
                     capture.ReadPayload(section),
                     section.use == SectionUse::Read,
                     Why(capture, section, stating) +
                         (entry == entries.end() ? "" : fmt::format("; number {} for restore", entry->number))});
            }
        }
    }
}

std::vector<StatingSection> StatingFile::Of(const std::string& name) const {
    std::vector<StatingSection> found;
    std::copy_if(sections.begin(), sections.end(), std::back_inserter(found),
                 [&](const StatingSection& section) { return section.name == name; });
    std::stable_sort(found.begin(), found.end(),
                     [](const StatingSection& a, const StatingSection& b) { return a.isRead && !b.isRead; });
    return found;
}

std::string StatingFile::TextInForce(const std::string& name) const {
    const std::vector<StatingSection> found = Of(name);
    return !found.empty() && found.front().isRead ? found.front().text : "";
}

}  // namespace stmdcm
