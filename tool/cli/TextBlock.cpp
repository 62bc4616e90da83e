#include "tool/cli/TextBlock.h"

#include <sstream>

namespace stmdcm {

namespace {

constexpr char kVerbatimStart[] = "  ";

}  // namespace

std::vector<TextBlock> TextBlocks(const std::string& text) {
    std::vector<TextBlock> blocks;
    bool isAfterBlank = false;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (line.empty()) {
            isAfterBlank = true;
            continue;
        }
        const bool isVerbatim = line.starts_with(kVerbatimStart);
        if (blocks.empty() || isAfterBlank || blocks.back().isVerbatim != isVerbatim) {
            blocks.push_back({isVerbatim, isAfterBlank, line});
        } else {
            blocks.back().text += (isVerbatim ? "\n" : " ") + line;
        }
        isAfterBlank = false;
    }
    return blocks;
}

std::string Wrapped(const std::string& text, std::size_t indent, std::size_t width) {
    std::string lines;
    std::size_t column = indent;
    std::istringstream in(text);
    for (std::string word; in >> word;) {
        if (!lines.empty() && column + 1 + word.size() > width) {
            lines += '\n';
            lines.append(indent, ' ');
            column = indent;
        } else if (!lines.empty()) {
            lines += ' ';
            ++column;
        }
        lines += word;
        column += word.size();
    }
    return lines;
}

}  // namespace stmdcm
