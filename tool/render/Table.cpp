#include "tool/render/Table.h"

#include <algorithm>

namespace stmdcm {

namespace {

constexpr std::size_t kGap = 2;

/// Characters rather than bytes: those that continue one in UTF-8 don't count.
std::size_t Width(const std::string& text) {
    const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), continues));
}

std::string RowText(const std::vector<Cell>& row, const std::vector<std::size_t>& widths, const Palette& palette) {
    std::string text;
    std::size_t pending = 0;  // Blanks that are only written when something follows.
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (!row[i].text.empty()) {
            text.append(pending, ' ') += palette.Paint(row[i].style, row[i].text);
            pending = 0;
        }
        pending += widths[i] - Width(row[i].text) + kGap;
    }
    return text;
}

}  // namespace

std::vector<std::size_t> Table::ColumnWidths() const {
    std::vector<std::size_t> widths;
    for (const auto& line : m_lines) {
        if (const auto* row = std::get_if<std::vector<Cell>>(&line)) {
            widths.resize(std::max(widths.size(), row->size()));
            for (std::size_t i = 0; i < row->size(); ++i) {
                widths[i] = std::max(widths[i], Width((*row)[i].text));
            }
        }
    }
    return widths;
}

std::string Table::Text(const Palette& palette, std::size_t indent) const {
    const std::vector<std::size_t> widths = ColumnWidths();
    std::string text;
    for (const auto& line : m_lines) {
        const auto* row = std::get_if<std::vector<Cell>>(&line);
        const std::string content = row != nullptr
                                        ? RowText(*row, widths, palette)
                                        : palette.Paint(std::get<Cell>(line).style, std::get<Cell>(line).text);
        text += content.empty() ? "\n" : std::string(indent, ' ') + content + "\n";
    }
    return text;
}

}  // namespace stmdcm
