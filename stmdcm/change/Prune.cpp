#include "stmdcm/change/Prune.h"

#include <sys/stat.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string_view>
#include <tuple>

#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

void RequireWhole(const Container& container) {
    const auto& sections = container.Sections();
    if (!container.IsWhole() || container.HasMore() ||
        std::any_of(sections.begin(), sections.end(), std::mem_fn(&Section::IsTooShort))) {
        throw Failure(container.Path(), "the row of sections is broken, nothing was copied; run stmdcm recover first")
            .At(container.StopOffset());
    }
}

/// What tells one state of a file from another.
auto StampOf(const Container& container) {
    struct stat info {};
    ::fstat(container.File().File().Descriptor(), &info);
    return std::tuple(info.st_size, info.st_mtim.tv_sec, info.st_mtim.tv_nsec, info.st_ctim.tv_sec,
                      info.st_ctim.tv_nsec);
}

}  // namespace

std::uint64_t PrunePlan::Size() const {
    std::uint64_t size = 0;
    for (const auto& [offset, length] : kept) {
        size += length;
    }
    return size;
}

PrunePlan PlanPrune(const Container& container, const History& history, std::size_t keep) {
    RequireWhole(container);
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
    const auto before = StampOf(container);
    std::uint64_t done = 0;
    for (const auto& [offset, length] : plan.kept) {
        CopyRange(container.File(), offset, length, to, [&](std::uint64_t more) { onCopied(done + more); });
        done += length;
    }
    if (StampOf(container) != before) {
        throw Failure(container.Path(), "another program has changed the file meanwhile; please try again");
    }
}

}  // namespace stmdcm
