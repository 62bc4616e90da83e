#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "stmdcm/capture/Container.h"

namespace stmdcm {

/// Sections that follow each other and are alike: same version and use, names that differ in a number at their end, and
/// nothing wrong with any of them.
struct SectionRun {
    std::size_t first = 0;
    std::size_t count = 0;
};

class SectionRuns {
  public:
    explicit SectionRuns(const Container& container);

    auto begin() const { return m_runs.begin(); }
    auto end() const { return m_runs.end(); }

    /// The name without the digits at its end.
    static std::string Stem(std::string name);

  private:
    std::vector<SectionRun> m_runs;
};

}  // namespace stmdcm
