#pragma once

#include <string_view>
#include <vector>

#include "stmdcm/capture/Container.h"
#include "stmdcm/reading/Findings.h"

namespace stmdcm {

/// Finds what is odd about the saves in a capture: each writes a section of program images and one of settings
/// (docs/tdf.md, "Saving").
class SaveFindings {
  public:
    /// Take each section that a search comes to, in the order of the file; borrows it.
    void Take(const Section& section, std::string_view name);

    /// Where the row of sections is broken nothing is said of pairs: what is missing may stand behind.
    void Tell(bool isRowWhole, Findings& findings) const;

  private:
    using Sections = std::vector<const Section*>;

    bool IsBehindUnfinished(const Section& settings) const;
    void TellUnfinished(Findings& findings) const;
    static void TellSurplus(const Sections& some, std::string_view name, std::size_t pairs, std::string_view other,
                            Findings& findings);
    void TellLater(Findings& findings) const;

    Sections m_unfinished;
    Sections m_images;
    Sections m_settings;
    Sections m_lastSteps;  ///< settings directly behind images that have not got their name yet
};

}  // namespace stmdcm
