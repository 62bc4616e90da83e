#include "tool/commands/LayoutPicture.h"

#include <fmt/format.h>

#include <algorithm>

#include "stmdcm/reading/Words.h"
#include "tool/output/Progress.h"

namespace stmdcm {

LayoutPicture::LayoutPicture(const Container& container, const SectionRuns& runs, const Palette& palette)
    : m_container(container), m_palette(palette) {
    for (const SectionRun& run : runs) {
        const Section& first = container.Sections()[run.first];
        const Section& last = container.Sections()[run.first + run.count - 1];
        Fill(first.offset, last.End(), KindOf(first));
    }
}

std::size_t LayoutPicture::KindOf(const Section& section) {
    std::string stem = SectionRuns::Stem(m_container.Name(section));
    const auto found = std::find_if(m_kinds.begin(), m_kinds.end(),
                                    [&](const Kind& kind) { return kind.stem == stem && kind.use == section.use; });
    if (found == m_kinds.end() && m_kinds.size() < kMaxKinds) {
        m_kinds.push_back({std::move(stem), section.use});
        return m_kinds.size() - 1;
    }
    return static_cast<std::size_t>(found - m_kinds.begin());
}

std::uint64_t LayoutPicture::CellBegin(std::size_t cell) const { return m_container.Size() * cell / kWidth; }

void LayoutPicture::Fill(std::uint64_t begin, std::uint64_t end, std::size_t kind) {
    const std::uint64_t size = m_container.Size();
    if (begin >= size) {
        return;
    }
    end = std::min(end, size);
    for (std::size_t i = begin * kWidth / size; i < kWidth && CellBegin(i) < end; ++i) {
        const std::uint64_t from = std::max(begin, CellBegin(i));
        const std::uint64_t to = std::min(end, CellBegin(i + 1));
        if (to > from && to - from > m_cells[i].bytes) {
            m_cells[i] = {to - from, kind};
        }
    }
}

std::string LayoutPicture::Letter(std::size_t kind) const {
    if (kind >= m_kinds.size()) {
        return kind == kMaxKinds ? "*" : m_palette.Paint(Style::Bad, "?");
    }
    const bool isRead = m_kinds[kind].use == SectionUse::Read;
    const std::string letter(1, static_cast<char>('A' + kind));
    return isRead ? letter
                  : m_palette.Paint(m_kinds[kind].use == SectionUse::Unreachable ? Style::Bad : Style::Quiet, letter);
}

std::string LayoutPicture::Text() const {
    std::string text = fmt::format("\n{} (a character is {})\n  |", m_palette.Paint(Style::Heading, "Layout"),
                                   SizeInWords(std::max<std::uint64_t>(1, m_container.Size() / kWidth)));
    for (const Cell& cell : m_cells) {
        text += Letter(cell.kind);
    }
    text += "|\n";
    for (std::size_t kind = 0; kind < m_kinds.size(); ++kind) {
        const std::string& stem = m_kinds[kind].stem;
        text += fmt::format("   {} {}", Letter(kind), stem.empty() ? "(no name)" : InWords(Unit::None, stem));
        text +=
            m_kinds[kind].use == SectionUse::Read ? "\n" : fmt::format(" ({})\n", SectionUseText(m_kinds[kind].use));
    }
    return text + fmt::format("   {} covered by no section\n", Letter(kMaxKinds + 1));
}

}  // namespace stmdcm
