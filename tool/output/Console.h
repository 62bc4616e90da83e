#pragma once

#include <string_view>

#include "tool/render/Palette.h"

namespace stmdcm {

/// Results go to standard output, diagnostics to standard error.
class Console {
  public:
    explicit Console(ColorMode mode);

    const Palette& Out() const { return m_out; }

    /// Throws Failure when standard output does not take it all.
    void Print(std::string_view text) const;
    /// One line: "stmdcm: " and the sentence.
    void Diagnose(std::string_view sentence) const;

  private:
    Palette m_out;
    Palette m_error;
};

}  // namespace stmdcm
