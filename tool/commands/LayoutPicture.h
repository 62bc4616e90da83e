#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "stmdcm/capture/Container.h"
#include "stmdcm/capture/SectionRuns.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// What lies where in a capture, as a bar with a letter for each kind of section.
class LayoutPicture {
  public:
    LayoutPicture(const Container& container, const SectionRuns& runs, const Palette& palette);

    std::string Text() const;

  private:
    static constexpr std::size_t kWidth = 64;
    static constexpr std::size_t kMaxKinds = 26;

    struct Kind {
        std::string stem;
        SectionUse use;
    };
    /// What fills most of a cell so far.
    struct Cell {
        std::uint64_t bytes = 0;
        std::size_t kind = kMaxKinds + 1;
    };

    std::size_t KindOf(const Section& section);
    void Fill(std::uint64_t begin, std::uint64_t end, std::size_t kind);
    std::uint64_t CellBegin(std::size_t cell) const;
    std::string Letter(std::size_t kind) const;

    const Container& m_container;
    const Palette& m_palette;
    std::vector<Kind> m_kinds;
    std::array<Cell, kWidth> m_cells;
};

}  // namespace stmdcm
