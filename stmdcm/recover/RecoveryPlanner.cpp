#include "stmdcm/recover/RecoveryPlanner.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/Words.h"
#include "stmdcm/recover/FirstSection.h"
#include "trace/format/SectionLayout.h"
#include "trace/format/UnfinishedSection.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::size_t kMaxPieces = 500'000;
constexpr std::uint64_t kLookBlock = 64U << 10;

}  // namespace

RecoveryPlanner::RecoveryPlanner(const CaptureFile& file, OnProgress onProgress, Offsets splits)
    : m_file(file),
      m_onProgress(std::move(onProgress)),
      m_splits(std::move(splits)),
      m_rules(file),
      m_search(file),
      m_inner(file, m_rules, m_onProgress) {}

RecoveryPlan RecoveryPlanner::Make() {
    RequireSplits();
    std::uint64_t first = FirstSection(m_file, m_rules);
    if (!m_splits.empty()) {
        first = std::min(first, *m_splits.begin());
    }
    TellIdentifier(first);
    m_isWhole = m_rules.LeadsTo(first, m_file.Size());
    for (std::uint64_t offset = first; offset < m_file.Size();) {
        offset = Step(offset);
        m_onProgress(offset);
        CheckEffort();
    }
    return std::move(m_plan);
}

void RecoveryPlanner::RequireSplits() const {
    for (const std::uint64_t offset : m_splits) {
        if (!m_rules.SectionAt(offset)) {
            throw Failure(m_file.Path(), fmt::format("no section begins at offset {}", offset));
        }
    }
}

void RecoveryPlanner::TellIdentifier(std::uint64_t first) {
    if (!m_file.HasIdentifier()) {
        m_plan.remarks.Add({RemarkKind::Identifier,
                            0,
                            first,
                            {},
                            fmt::format("the file does not begin with \"{}\"; the result does", kTDFIdentifier)});
    }
}

/// The end of the file for none.
std::uint64_t RecoveryPlanner::NextSplit(std::uint64_t offset) const {
    const auto next = m_splits.upper_bound(offset);
    return next == m_splits.end() ? m_file.Size() : *next;
}

/// Decides about the bytes at the offset; gives where those begin that are still undecided.
std::uint64_t RecoveryPlanner::Step(std::uint64_t offset) {
    const bool isSplit = m_splits.count(offset) > 0;
    if (isSplit) {
        m_isWhole = m_rules.LeadsTo(offset, m_file.Size());
    }
    const auto section = m_rules.HeaderAt(offset);
    const bool fits = section && m_rules.IsWhole(*section);
    const std::uint64_t split = NextSplit(offset);
    if (fits && (m_isWhole || m_rules.MayEndAt(section->End()))) {
        return Trust(*section, split);
    }
    const std::uint64_t next = std::min(NextFound(offset), split);
    const bool isNamed = section && IsPlausibleName(m_rules.NameOf(*section));
    if (fits && (isNamed || isSplit) && section->End() <= next && !TakesOrphan(*section, next)) {
        if (!DropUnfinished(*section, section->End())) {  // what is dropped behind it would bring it next to a text
            Keep(*section);
        }
        return section->End();
    }
    if (isNamed && HasRoom(*section, next)) {
        Repair(*section, next);
    } else {
        Drop(offset, next, "belong to no section that could be found");
    }
    return next;
}

/// Nothing speaks against the section, but for a split within it.
std::uint64_t RecoveryPlanner::Trust(const Section& section, std::uint64_t split) {
    if (section.End() <= split) {
        Keep(section);
        return section.End();
    }
    if (HasRoom(section, split)) {
        Split(section, split);
    } else {
        Drop(section.offset, split, "are part of the header or name of a section that another one is split off from");
    }
    return split;
}

std::uint64_t RecoveryPlanner::NextFound(std::uint64_t offset) {
    if (m_found <= offset) {
        m_found = m_search.Find(offset + 1, m_file.Size(), [this](std::uint64_t place) {
            m_onProgress(place);
            return m_rules.IsFound(place);
        });
    }
    return m_found;
}

bool RecoveryPlanner::HasRoom(const Section& section, std::uint64_t end) const {
    const std::uint64_t room = end - section.offset;
    return room >= section.PayloadOffset() - section.offset && room <= kMaxFileSize;
}

/// A host writes an empty section, then the payload, then the length. Killed before that, it leaves payload behind an
/// empty section.
bool RecoveryPlanner::TakesOrphan(const Section& section, std::uint64_t end) const {
    if (section.PayloadLength() != 0 || section.End() == end) {
        return false;
    }
    const auto next = m_rules.HeaderAt(section.End());
    return !next || !HasRoom(*next, end) || !IsPlausibleName(m_rules.NameOf(*next));
}

void RecoveryPlanner::Keep(const Section& section) {
    const std::string name = m_rules.NameOf(section);
    if (!name.empty() && !IsPlausibleName(name)) {
        Tell(RemarkKind::OddName, section, section.length,
             "the section's name is not one that a writer would give; it was kept as it is");
    }
    const bool isOverLimit = section.length > kMaxSectionLength;
    if (isOverLimit) {
        Tell(RemarkKind::OverLimit, section, section.length,
             fmt::format("the section is longer than {} bytes, so no reader finds it; it was put last, in front of "
                         "nothing",
                         kMaxSectionLength));
    }
    LookInside(section, section.End());
    auto& extents = isOverLimit ? m_plan.overLimit : m_plan.whole;
    if (!extents.empty() && extents.back().offset + extents.back().length == section.offset) {
        extents.back().length += section.length;
    } else {
        extents.push_back({section.offset, section.length});
    }
    ++m_plan.wholeCount;
    m_plan.keptBytes += section.length;
}

void RecoveryPlanner::Tell(RemarkKind kind, const Section& section, std::uint64_t length, std::string sentence) {
    m_plan.remarks.Add(
        {kind, section.offset, length, InWords(Unit::None, m_rules.NameOf(section)), std::move(sentence)});
}

/// A length that is too great can lead on as if nothing was wrong.
void RecoveryPlanner::LookInside(const Section& section, std::uint64_t end) {
    if (m_inner.IsCapture(section, end)) {
        m_plan.remarks.Add({RemarkKind::InnerCapture, section.PayloadOffset(), end - section.PayloadOffset(),
                            InWords(Unit::None, m_rules.NameOf(section)),
                            "the section holds a capture of its own, whose sections are none of this one"});
        return;
    }
    m_inner.Tell(section, end, m_isWhole, [&](const Section& inner) {
        Tell(RemarkKind::HiddenSection, inner, m_file.Held(inner.offset, inner.length),
             fmt::format("the section at offset {} holds what looks like this one; either its length is wrong, or this "
                         "is data; --split {} takes this one out",
                         section.offset, inner.offset));
    });
}

void RecoveryPlanner::Split(const Section& section, std::uint64_t end) {
    if (DropUnfinished(section, end)) {
        return;
    }
    Tell(RemarkKind::Split, section, end - section.offset,
         fmt::format("the section states the length {}; it was corrected to {}, up to the section that was split off",
                     section.length, end - section.offset));
    Shorten(section, end);
}

void RecoveryPlanner::Repair(const Section& section, std::uint64_t end) {
    if (DropUnfinished(section, end)) {
        return;
    }
    const std::string name = m_rules.NameOf(section);
    const bool isLast = end == m_file.Size();
    const std::uint64_t kept = isLast && IsTextSection(name) ? EndOfWholeLines(section) : end;
    if (isLast && section.End() > end) {
        Tell(RemarkKind::CutShort, section, end - section.offset,
             fmt::format("the file ends within the section: {} of {} payload bytes are there",
                         end - section.PayloadOffset(), section.PayloadLength()));
    } else {
        Tell(RemarkKind::LengthCorrected, section, end - section.offset,
             fmt::format("the section states the length {}, which can't be true; it was corrected to {}, up to {}",
                         section.length, kept - section.offset, isLast ? "the end of the file" : "the next section"));
    }
    Shorten(section, kept);
    if (kept < end) {
        Drop(kept, end, fmt::format("are the part of a line at the end of section {}", name));
    }
}

/// What is left of an interrupted save may look like a whole list of object files, which a later save would bring in
/// force (docs/tdf.md).
bool RecoveryPlanner::DropUnfinished(const Section& section, std::uint64_t end) {
    if (!IsUnfinishedName(m_rules.NameOf(section))) {
        return false;
    }
    Drop(section.offset, end,
         fmt::format("are part of a save that was interrupted and never in force; extract --offset {} writes them",
                     section.offset));
    return true;
}

void RecoveryPlanner::Shorten(const Section& section, std::uint64_t end) {
    m_plan.repaired.push_back({section, static_cast<std::uint32_t>(end - section.offset)});
    m_plan.keptBytes += m_plan.repaired.back().length;
    LookInside(section, end);
}

std::uint64_t RecoveryPlanner::EndOfWholeLines(const Section& section) const {
    for (std::uint64_t end = m_file.Size(); end > section.PayloadOffset();) {
        const std::uint64_t begin = std::max(section.PayloadOffset(), end - std::min(end, kLookBlock));
        const std::size_t place = m_file.Read(begin, end - begin).rfind('\n');
        if (place != std::string::npos) {
            return begin + place + 1;
        }
        end = begin;
    }
    return section.PayloadOffset();
}

void RecoveryPlanner::Drop(std::uint64_t offset, std::uint64_t end, const std::string& why) {
    m_plan.remarks.Add(
        {RemarkKind::Dropped, offset, end - offset, {}, fmt::format("{} {}", Counted(end - offset, "byte"), why)});
    m_plan.droppedBytes += end - offset;
}

void RecoveryPlanner::CheckEffort() const {
    if (m_plan.whole.size() + m_plan.repaired.size() + m_plan.overLimit.size() > kMaxPieces) {
        throw Failure(m_file.Path(),
                      fmt::format("the file is damaged in more than {} places, so nothing was written", kMaxPieces));
    }
}

}  // namespace stmdcm
