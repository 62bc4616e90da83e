#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tool/many/FileWork.h"

namespace stmdcm {

/// What became of many files, in all.
class Summary {
  public:
    /// So many failures are told once more at the end: they may have scrolled away.
    static constexpr std::size_t kMostFailures = 20;

    void Add(const FileResult& result);
    /// What is to be said of those that are not among them, and the status of that.
    void AddRest(const std::string& phrase, ExitStatus status);

    std::size_t Files() const { return m_files; }
    /// Of all: a file that could not be read counts for more than one that could not be worked on, and that for more
    /// than a doubt.
    ExitStatus Status() const { return m_status; }
    /// "1000 files: 990 changed, 8 as asked already, 2 failed"
    std::string Sentence() const;
    /// Sentences: the first that failed, and how many more there are. None where they were told only just.
    std::vector<std::string> Failures() const;
    /// Whether there is more to tell than that all of them were read.
    bool IsNews() const { return !m_counts.empty() || !m_rest.empty() || m_status != ExitStatus::Done; }

  private:
    void Add(const Count& count);

    std::size_t m_files = 0;
    std::size_t m_doubtful = 0;
    std::size_t m_failed = 0;
    ExitStatus m_status = ExitStatus::Done;
    std::vector<Count> m_counts;
    std::vector<std::string> m_failures;
    std::string m_rest;
};

}  // namespace stmdcm
