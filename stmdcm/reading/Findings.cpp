#include "stmdcm/reading/Findings.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>
#include <utility>

#include "stmdcm/reading/Words.h"

namespace stmdcm {

namespace {

constexpr std::size_t kMaxQuoted = 48;

std::size_t IndexOf(const FindingKind& kind) { return static_cast<std::size_t>(&kind - kFindingKinds); }

bool IsBefore(const Finding& left, const Finding& right) {
    return std::tie(left.place.offset, left.place.line) < std::tie(right.place.offset, right.place.line);
}

}  // namespace

const char* SeverityName(Severity severity) {
    constexpr const char* kNames[] = {"note", "warning", "error"};
    return kNames[static_cast<std::size_t>(severity)];
}

std::string InWords(const Place& place) {
    std::string words = place.section;
    if (place.offset) {
        (words += words.empty() ? "at " : " at ") += std::to_string(*place.offset);
    }
    if (place.line != 0) {
        (words += words.empty() ? "line " : ", line ") += std::to_string(place.line);
    }
    return words;
}

void Findings::Add(const FindingKind& kind, Place place, std::string what, std::string effect) {
    Add({&kind, std::move(place), std::move(what), std::move(effect)});
}

void Findings::Add(Finding finding) {
    if (m_counts[IndexOf(*finding.kind)]++ < kMaxOfKind) {
        m_kept.insert(std::upper_bound(m_kept.begin(), m_kept.end(), finding, IsBefore), std::move(finding));
    }
}

void Findings::Add(const Findings& others) {
    for (const Finding& finding : others.m_kept) {
        Add(finding);
    }
    for (std::size_t i = 0; i < m_counts.size(); ++i) {
        m_counts[i] += others.m_counts[i] - std::min(others.m_counts[i], kMaxOfKind);
    }
}

std::size_t Findings::Count(const FindingKind& kind) const { return m_counts[IndexOf(kind)]; }

std::size_t Findings::Count(Severity severity) const {
    std::size_t count = 0;
    for (const FindingKind& kind : kFindingKinds) {
        count += kind.severity == severity ? Count(kind) : 0;
    }
    return count;
}

std::string Quoted(std::string_view text) {
    const std::string_view shown = text.substr(0, kMaxQuoted);
    return fmt::format("\"{}{}\"", InWords(Unit::None, shown), shown.size() < text.size() ? "..." : "");
}

std::string Counted(std::size_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace stmdcm
