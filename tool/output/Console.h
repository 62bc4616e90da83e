#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/render/Palette.h"

namespace stmdcm {

/// What would go to the two streams.
struct Told {
    std::string out;
    std::string error;
};

/// Results go to standard output, diagnostics to standard error.
class Console {
  public:
    explicit Console(ColorMode mode);

    /// The same, but everything is added to `told`, which is borrowed.
    Console Into(Told& told) const;

    const Palette& Out() const { return m_out; }

    /// Throws Failure when standard output does not take it all.
    static void ToStandardOutput(std::string_view text);
    /// Lost where standard error does not take it.
    static void ToStandardError(const std::string& text);

    void Print(std::string_view text) const;
    /// One line: "stmdcm: " and the sentence, in which what a terminal would obey is escaped.
    void Diagnose(std::string_view sentence) const;
    void Diagnose(const std::vector<std::string>& sentences) const;
    /// Behind the name of the file that they are about.
    void Diagnose(const std::string& file, const std::vector<std::string>& doubts) const;

  private:
    Palette m_out;
    Palette m_error;
    Told* m_told = nullptr;  ///< null: the streams
};

}  // namespace stmdcm
