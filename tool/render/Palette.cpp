#include "tool/render/Palette.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>

namespace stmdcm {

namespace {

const char* Code(Style style) {
    switch (style) {
        case Style::Heading:
            return "1";
        case Style::Good:
            return "32";
        case Style::Notable:
            return "33";
        case Style::Bad:
            return "31";
        case Style::Quiet:
            return "2";
        case Style::Plain:
            break;
    }
    return "0";
}

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
    return fmt::format("\x1b[{}m{}\x1b[0m", Code(style), text);
}

}  // namespace stmdcm
