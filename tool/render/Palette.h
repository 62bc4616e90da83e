#pragma once

#include <string>
#include <string_view>

namespace stmdcm {

enum class ColorMode { Auto, Always, Never };

/// What a piece of text means.
enum class Style { Plain, Heading, Good, Notable, Bad, Quiet };

/// Shows what text means in colour, or gives it back as it is.
class Palette {
  public:
    explicit Palette(bool enabled) : m_enabled(enabled) {}

    /// `Auto` colours a terminal, unless NO_COLOR is set to anything or TERM is "dumb".
    static Palette For(int descriptor, ColorMode mode);

    std::string Paint(Style style, std::string_view text) const;

  private:
    bool m_enabled;
};

}  // namespace stmdcm
