#include "tool/many/Summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "stmdcm/reading/Findings.h"

namespace stmdcm {

namespace {

/// A status counts for more than those in front of it.
constexpr std::array kByWeight{ExitStatus::Done, ExitStatus::Doubtful, ExitStatus::Failed, ExitStatus::Usage,
                               ExitStatus::Unread};

ExitStatus Heavier(ExitStatus a, ExitStatus b) {
    return std::find(kByWeight.begin(), kByWeight.end(), a) < std::find(kByWeight.begin(), kByWeight.end(), b) ? b : a;
}

}  // namespace

void Summary::Add(const FileResult& result) {
    ++m_files;
    m_status = Heavier(m_status, result.status);
    m_doubtful += result.hasDoubts || result.status == ExitStatus::Doubtful ? 1U : 0U;
    for (const Count& count : result.counts) {
        Add(count);
    }
    if (!result.failure.empty() && ++m_failed <= kMostFailures) {
        m_failures.push_back(result.failure);
    }
}

void Summary::AddRest(const std::string& phrase, ExitStatus status) {
    m_rest = phrase;
    m_status = Heavier(m_status, status);
}

void Summary::Add(const Count& count) {
    const auto known =
        std::find_if(m_counts.begin(), m_counts.end(), [&](const Count& each) { return each.what == count.what; });
    if (known == m_counts.end()) {
        m_counts.push_back(count);
    } else {
        known->number += count.number;
    }
}

std::string Summary::Sentence() const {
    std::vector<Count> counts = m_counts;
    counts.push_back({"with doubts", m_doubtful});
    counts.push_back({"failed", m_failed});
    if (m_files == 0) {
        return fmt::format("0 files: {}", m_rest);
    }
    return fmt::format("{}: {}{}{}", Counted(m_files, "file"), InWords(counts), m_rest.empty() ? "" : "; ", m_rest);
}

std::vector<std::string> Summary::Failures() const {
    if (m_files <= kMostFailures) {
        return {};
    }
    std::vector<std::string> sentences;
    for (const std::string& failure : m_failures) {
        sentences.push_back("failed: " + failure);
    }
    if (m_failed > m_failures.size()) {
        sentences.push_back(fmt::format("failed: {} more", m_failed - m_failures.size()));
    }
    return sentences;
}

}  // namespace stmdcm
