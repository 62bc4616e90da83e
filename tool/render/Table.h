#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tool/render/Palette.h"

namespace stmdcm {

struct Cell {
    std::string text;
    Style style = Style::Plain;
};

/// Rows of cells under each other in aligned columns, with whole lines between them.
class Table {
  public:
    void AddRow(std::vector<Cell> cells) { m_lines.emplace_back(std::move(cells)); }
    /// A line that takes no part in the alignment.
    void AddLine(Cell line) { m_lines.emplace_back(std::move(line)); }

    /// Each line is indented by `indent` blanks and ends in a line feed.
    std::string Text(const Palette& palette, std::size_t indent) const;

  private:
    std::vector<std::size_t> ColumnWidths() const;

    std::vector<std::variant<Cell, std::vector<Cell>>> m_lines;
};

}  // namespace stmdcm
