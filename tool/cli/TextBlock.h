#pragma once

#include <string>
#include <vector>

namespace stmdcm {

/// A piece of a help text.
struct TextBlock {
    bool isVerbatim = false;    ///< lines that begin with two blanks: shown as they are
    bool isAfterBlank = false;  ///< an empty line is in front of it
    std::string text;           ///< of a paragraph one line, whatever its line ends were
};

std::vector<TextBlock> TextBlocks(const std::string& text);

/// `text` in lines of at most `width` columns; those behind the first begin with `indent` blanks, which count, and the
/// first stands behind as many.
std::string Wrapped(const std::string& text, std::size_t indent, std::size_t width);

}  // namespace stmdcm
