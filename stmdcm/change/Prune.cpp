#include "stmdcm/change/Prune.h"

#include <map>
#include <string_view>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/FileStamp.h"

namespace stmdcm {

std::uint64_t PrunePlan::Size() const {
    std::uint64_t size = 0;
    for (const auto& [offset, length] : kept) {
        size += length;
    }
    return size;
}

PrunePlan PlanPrune(const Container& container, const History& history, std::size_t keep) {
    container.RequireWhole();
    PrunePlan plan;
    std::map<std::string_view, std::size_t> seen;  // of each name
    const std::vector<HistoryEntry>& entries = history.Entries();
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        if (entry->section.use == SectionUse::Retired && ++seen[entry->name] > keep) {
            plan.dropped.insert(plan.dropped.begin(), *entry);
            plan.freed += entry->section.length;
        }
    }
    std::uint64_t begin = 0;
    for (const HistoryEntry& entry : plan.dropped) {
        plan.kept.emplace_back(begin, entry.section.offset - begin);
        begin = entry.section.End();
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
