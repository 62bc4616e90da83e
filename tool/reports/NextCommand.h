#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"

namespace stmdcm {

/// What to do about the findings of one file: command lines for a shell, in which NEW.tdf, GOOD, OLD, NEW, NAME and
/// VALUE are the user's to fill in. One is named only where it would work (docs/check.md, "What to do next").
class NextCommands {
  public:
    enum class LongNames { Whole, AsFile };

    /// Borrows the reading. Looks into its file again where a finding asks for it. A name of over kMaxColumns can be
    /// called FILE, since one that is cut would be of no use.
    explicit NextCommands(const Reading& reading, LongNames names = LongNames::Whole);

    /// Empty for none.
    std::string For(const FindingKind& kind) const;

  private:
    bool Meets(Needs needs) const;
    std::string Line(const NextStep& step) const;
    void LookInside();

    const Reading& m_reading;
    std::string m_file;             ///< as a word of the command line
    bool m_isWhole = false;         ///< of a capture, and under a name that commands take
    bool m_isRecoverable = false;   ///< there is a section that recover keeps
    std::string m_splits;           ///< options of recover; empty: nothing that is missing lies in another section
    std::size_t m_laterNumber = 0;  ///< of the last later save, for restore; 0 for none
};

/// The text as one word of a shell's command line.
std::string ShellWord(const std::string& text);

}  // namespace stmdcm
