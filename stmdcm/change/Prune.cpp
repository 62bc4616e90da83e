#include "stmdcm/change/Prune.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/FileStamp.h"
#include "stmdcm/pins/PinSection.h"
#include "trace/format/RetiredSection.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

std::uint64_t PrunePlan::Size() const {
    std::uint64_t size = 0;
    for (const auto& [offset, length] : kept) {
        size += length;
    }
    return size;
}

namespace {

/// `seen`: how many of its name were met that were in force, the youngest first.
bool Goes(const Section& section, std::size_t keep, std::size_t& seen) {
    return section.use == SectionUse::Retired && (!WasInForce(section.version) || ++seen > keep);
}

}  // namespace

PrunePlan PlanPrune(const Container& container, const History& history, std::size_t keep) {
    container.RequireWhole();
    PrunePlan plan;
    std::vector<Section> gone;
    std::map<std::string_view, std::size_t> seen;  // of each name
    const std::vector<HistoryEntry>& entries = history.Entries();
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        if (Goes(entry->section, keep, seen[entry->name])) {
            plan.dropped.push_back(*entry);
            gone.push_back(entry->section);
        }
    }
    std::reverse(plan.dropped.begin(), plan.dropped.end());
    const std::vector<Section>& sections = container.Sections();
    for (auto section = sections.rbegin(); section != sections.rend(); ++section) {
        if (container.IsOrWas(*section, kPinSectionName, kPinSectionVersion) &&
            Goes(*section, keep, seen[kPinSectionName])) {
            ++plan.droppedPins;
            gone.push_back(*section);
        }
    }
    std::sort(gone.begin(), gone.end(), [](const Section& a, const Section& b) { return a.offset < b.offset; });
    std::uint64_t begin = 0;
    for (const Section& section : gone) {
        plan.freed += section.length;
        plan.kept.emplace_back(begin, section.offset - begin);
        begin = section.End();
    }
    plan.kept.emplace_back(begin, container.Size() - begin);
    return plan;
}

void CopyPruned(const Container& container, const PrunePlan& plan, ByteSink& to, const OnCopied& onCopied) {
    const FileStamp before = FileStamp::Of(container.File().File(), container.Path());
    std::uint64_t done = 0;
    for (const auto& [offset, length] : plan.kept) {
        CopyRange(container.File(), offset, length, to, [&](std::uint64_t more) { onCopied(done + more); });
        done += length;
    }
    if (FileStamp::Of(container.File().File(), container.Path()) != before) {
        throw Failure(container.Path(), "the file was changed while it was copied; please try again");
    }
}

}  // namespace stmdcm
