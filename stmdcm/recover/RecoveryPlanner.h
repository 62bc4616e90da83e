#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "stmdcm/capture/CaptureFile.h"
#include "stmdcm/recover/HeaderRules.h"
#include "stmdcm/recover/HeaderSearch.h"
#include "stmdcm/recover/InnerSections.h"
#include "stmdcm/recover/RecoveryPlan.h"

namespace stmdcm {

/// Finds the sections of a damaged capture (docs/recover.md).
///
/// Where the chain of sections reaches the end of the file all of them are kept as they are. Elsewhere a section is
/// taken at its word when what follows it looks like a section, too; otherwise the next header is searched for from the
/// section's beginning on. The section is kept as it is when it states to end in front of that header, and with a
/// corrected length when it states to end behind it; bytes that belong to no section are dropped. What looks like a
/// section within one that was kept is told.
class RecoveryPlanner {
  public:
    using OnProgress = InnerSections::OnProgress;
    using Offsets = std::set<std::uint64_t>;

    /// Borrows the file. At each of `splits` a section begins, and one around it ends.
    RecoveryPlanner(const CaptureFile& file, OnProgress onProgress, Offsets splits = {});

    /// Throws Failure when the file can't be read, is too badly damaged to keep account of it, or has no section where
    /// one should be split off.
    RecoveryPlan Make();

  private:
    void RequireSplits() const;
    void TellIdentifier(std::uint64_t first);
    std::uint64_t NextSplit(std::uint64_t offset) const;
    std::uint64_t Step(std::uint64_t offset);
    std::uint64_t Trust(const Section& section, std::uint64_t split);
    std::uint64_t NextFound(std::uint64_t offset);
    bool HasRoom(const Section& section, std::uint64_t end) const;
    bool TakesOrphan(const Section& section, std::uint64_t end) const;

    void Keep(const Section& section);
    void Repair(const Section& section, std::uint64_t end);
    void Split(const Section& section, std::uint64_t end);
    void Drop(std::uint64_t offset, std::uint64_t end, const std::string& why);
    bool DropUnfinished(const Section& section, std::uint64_t end);
    /// It goes into the result with this end.
    void Shorten(const Section& section, std::uint64_t end);
    void LookInside(const Section& section, std::uint64_t end);
    void Tell(RemarkKind kind, const Section& section, std::uint64_t length, std::string sentence);
    std::uint64_t EndOfWholeLines(const Section& section) const;
    void CheckEffort() const;

    const CaptureFile& m_file;
    OnProgress m_onProgress;
    Offsets m_splits;
    HeaderRules m_rules;
    HeaderSearch m_search;
    InnerSections m_inner;
    RecoveryPlan m_plan;
    bool m_isWhole = false;     ///< the chain of sections leads to the end of the file
    std::uint64_t m_found = 0;  ///< the last result of the search: no header is between where it began and this
};

}  // namespace stmdcm
