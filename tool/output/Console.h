#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/render/Palette.h"

namespace stmdcm {

/// Results go to standard output, diagnostics to standard error.
class Console {
  public:
    explicit Console(ColorMode mode);

    const Palette& Out() const { return m_out; }

    /// Throws Failure when standard output does not take it all.
    static void Print(std::string_view text);
    /// One line: "stmdcm: " and the sentence, in which what a terminal would obey is escaped. Lost
    /// where standard error does not take it.
    void Diagnose(std::string_view sentence) const;
    void Diagnose(const std::vector<std::string>& sentences) const;
    /// Behind the name of the file that they are about.
    void Diagnose(const std::string& file, const std::vector<std::string>& doubts) const;

  private:
    Palette m_out;
    Palette m_error;
};

}  // namespace stmdcm
