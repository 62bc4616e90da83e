#include "tool/render/Palette.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>

namespace stmdcm {

namespace {

/// By style: plain, heading, good, notable, bad, quiet.
constexpr int kCodes[] = {0, 1, 32, 33, 31, 2};

}  // namespace

Palette Palette::For(int descriptor, ColorMode mode) {
    if (mode != ColorMode::Auto) {
        return Palette(mode == ColorMode::Always);
    }
    const char* noColor = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    const bool refused =
        (noColor != nullptr && *noColor != '\0') || (terminal != nullptr && std::string_view(terminal) == "dumb");
    return Palette(!refused && ::isatty(descriptor) == 1);
}

std::string Palette::Paint(Style style, std::string_view text) const {
    if (!m_enabled || style == Style::Plain || text.empty()) {
        return std::string(text);
    }
    return fmt::format("\x1b[{}m{}\x1b[0m", kCodes[static_cast<std::size_t>(style)], text);
}

}  // namespace stmdcm
