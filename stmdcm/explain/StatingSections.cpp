#include "stmdcm/explain/StatingSections.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

#include "stmdcm/change/History.h"
#include "stmdcm/pins/PinSection.h"
#include "stmdcm/reading/Reading.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/SectionLayout.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// What states something, and when it is read.
constexpr struct Stating {
    const char* name;
    std::uint32_t version;
    const char* reading;
} kStating[] = {
    {kCommonSectionName, kCommonSectionVersion, "read first by a load"},
    {kDeviceSectionName, kDeviceSectionVersion, "read by a load before STMDECODERINFO"},
    {kStmSectionName, kStmSectionVersion, "read last by a load"},
    {kPinSectionName, kPinSectionVersion, "read by stmdcm alone"},
};

/// What becomes of a section that a search finds.
std::pair<Standing, std::string> OfFound(const Reading& reading, const Stating& stating) {
    const std::string_view name = stating.name;
    const bool isForHosts = name == kDeviceSectionName || name == kStmSectionName;
    const bool isLookedFor = reading.hasObjectFiles && (reading.hasDevice || name != kStmSectionName);
    if (reading.isLoaded || !isForHosts) {
        return {Standing::InForce, stating.reading};
    }
    return isLookedFor ? std::pair(Standing::NotInForce, fmt::format("{}, which fails then", stating.reading))
                       : std::pair(Standing::NotRead, std::string("loading has failed before it is looked for"));
}

std::pair<Standing, std::string> StandingOf(const Container& capture, const Reading& reading, const Section& section,
                                            const Stating& stating) {
    switch (section.use) {
        case SectionUse::Read:
            return OfFound(reading, stating);
        case SectionUse::Shadowed:
            return {Standing::NotInForce, fmt::format("an older {} is read", stating.name)};
        case SectionUse::Retired:
            return {Standing::NotInForce, "a change took it out of use"};
        case SectionUse::Unreachable:
            break;
    }
    return {Standing::NotRead,
            fmt::format("a search ends at {}: {}", capture.StopOffset(), ScanStopText(capture.Stop()))};
}

/// Those of the wanted names that no walk comes to, but the reading has found.
std::vector<Section> FoundBehindTheStop(const Container& capture, const Reading& reading) {
    std::vector<Section> sections;
    for (const Finding& finding : reading.findings.Sorted()) {
        const std::uint64_t offset = finding.place.offset.value_or(0);
        if (finding.kind == &Kind("C-UNREACHABLE") && capture.At(offset) == nullptr) {
            const std::string bytes = capture.File().Read(offset, SectionHeader::kSize);
            const SectionHeader header = DecodeSectionHeader(bytes.data());
            sections.push_back({offset, header.length, header.version, header.nameLength, SectionUse::Unreachable});
        }
    }
    return sections;
}

}  // namespace

StatingFile::StatingFile(const std::string& path) {
    if (KindOf(path) == ConfigurationKind::Settings) {
        const CaptureFile file(path, CaptureFile::Identifier::Optional);
        limits = kFileLineLimits;
        settings = kSettingsFile;
        reading = stmdcm::Read(path);
        sections.push_back(
            {kSettingsFile, {}, file.Read(0, kMaxSettingsFileSize), Standing::InForce, "read by a load"});
        return;
    }
    settings = kStmSectionName;
    const Container capture(path);
    reading = stmdcm::Read(capture);
    std::vector<Section> all = capture.Sections();
    const std::vector<Section> others = FoundBehindTheStop(capture, reading);
    all.insert(all.end(), others.begin(), others.end());
    std::sort(all.begin(), all.end(), [](const Section& a, const Section& b) { return a.offset < b.offset; });
    for (std::size_t i = 0; i < all.size(); ++i) {
        Add(capture, all[i], i + 1 < all.size() ? all[i + 1].offset : capture.Size());
    }
    TellNumbers(History(capture));
}

void StatingFile::TellNumbers(const History& history) {
    std::map<std::uint64_t, std::size_t> numbers;
    for (const HistoryEntry& entry : history.Entries()) {
        if (!entry.IsCurrent()) {
            numbers[entry.section.offset] = entry.number;
        }
    }
    for (StatingSection& section : sections) {
        const auto number = section.place.offset ? numbers.find(*section.place.offset) : numbers.end();
        if (number != numbers.end()) {
            section.why += fmt::format("; number {} for restore", number->second);
        }
    }
}

/// The length of one that no search comes to is often what is wrong with it: its text ends where the next one begins.
void StatingFile::Add(const Container& capture, const Section& section, std::uint64_t next) {
    const auto& read = reading.readSections;
    const bool isRead = std::find(read.begin(), read.end(), section.offset) != read.end();
    for (const Stating& stating : kStating) {
        const bool isReadAsIt = isRead && capture.HasName(section, stating.name);
        if (isReadAsIt || capture.IsOrWas(section, stating.name, stating.version)) {
            const bool isReached = section.use != SectionUse::Unreachable;
            const std::uint64_t room = isReached ? capture.Size() : next - std::min(next, section.PayloadOffset());
            auto [standing, why] = StandingOf(capture, reading, section, stating);
            sections.push_back(
                {stating.name,
                 {stating.name, section.offset},
                 capture.File().Read(section.PayloadOffset(), std::min(capture.HeldPayload(section), room)),
                 standing,
                 std::move(why)});
        }
    }
}

std::vector<StatingSection> StatingFile::Of(const std::string& name) const {
    std::vector<StatingSection> found;
    std::copy_if(sections.begin(), sections.end(), std::back_inserter(found),
                 [&](const StatingSection& section) { return section.name == name; });
    std::stable_sort(found.begin(), found.end(),
                     [](const StatingSection& a, const StatingSection& b) { return a.standing < b.standing; });
    return found;
}

}  // namespace stmdcm
