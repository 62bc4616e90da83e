#include "tool/commands/LayoutPicture.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "stmdcm/reading/Words.h"

namespace stmdcm {

namespace {

constexpr std::size_t kWidth = 64;
constexpr std::size_t kMaxKinds = 26;

struct PartKind {
    std::string stem;
    SectionUse use;
};

/// What fills most of a column so far.
struct Column {
    std::uint64_t bytes = 0;
    std::size_t kind = kMaxKinds + 1;
};

class Picture {
  public:
    Picture(const Container& container, const SectionRuns& runs, const Palette& palette)
        : m_container(container), m_palette(palette) {
        for (const SectionRun& run : runs) {
            const Section& first = container.Sections()[run.first];
            const Section& last = container.Sections()[run.first + run.count - 1];
            Fill(first.offset, last.End(), KindOf(first));
        }
    }

    std::string Text() const {
        std::string text = fmt::format("\n{} (a character is {})\n  |", m_palette.Paint(Style::Heading, "Layout"),
                                       SizeInWords(std::max<std::uint64_t>(1, m_container.Size() / kWidth)));
        for (const Column& column : m_columns) {
            text += Letter(column.kind);
        }
        text += "|\n";
        for (std::size_t kind = 0; kind < m_kinds.size(); ++kind) {
            const auto& [stem, use] = m_kinds[kind];
            text += fmt::format("   {} {}", Letter(kind), stem.empty() ? "(no name)" : Shown(stem));
            text += use == SectionUse::Read ? "\n" : fmt::format(" ({})\n", SectionUseText(use));
        }
        return text + fmt::format("   {} covered by no section\n", Letter(kMaxKinds + 1));
    }

  private:
    std::size_t KindOf(const Section& section) {
        std::string stem = SectionRuns::Stem(m_container.Name(section));
        const auto found = std::find_if(m_kinds.begin(), m_kinds.end(), [&](const PartKind& kind) {
            return kind.stem == stem && kind.use == section.use;
        });
        if (found == m_kinds.end() && m_kinds.size() < kMaxKinds) {
            m_kinds.push_back({std::move(stem), section.use});
            return m_kinds.size() - 1;
        }
        return static_cast<std::size_t>(found - m_kinds.begin());
    }

    std::uint64_t ColumnBegin(std::size_t column) const { return m_container.Size() * column / kWidth; }

    void Fill(std::uint64_t begin, std::uint64_t end, std::size_t kind) {
        const std::uint64_t size = m_container.Size();
        if (begin >= size) {
            return;
        }
        end = std::min(end, size);
        for (std::size_t i = begin * kWidth / size; i < kWidth && ColumnBegin(i) < end; ++i) {
            const std::uint64_t from = std::max(begin, ColumnBegin(i));
            const std::uint64_t to = std::min(end, ColumnBegin(i + 1));
            if (to > from && to - from > m_columns[i].bytes) {
                m_columns[i] = {to - from, kind};
            }
        }
    }

    std::string Letter(std::size_t kind) const {
        if (kind >= m_kinds.size()) {
            return kind == kMaxKinds ? "*" : m_palette.Paint(Style::Bad, "?");
        }
        const std::string letter(1, static_cast<char>('A' + kind));
        const SectionUse use = m_kinds[kind].use;
        return use == SectionUse::Read
                   ? letter
                   : m_palette.Paint(use == SectionUse::Unreachable ? Style::Bad : Style::Quiet, letter);
    }

    const Container& m_container;
    const Palette& m_palette;
    std::vector<PartKind> m_kinds;
    std::array<Column, kWidth> m_columns;
};

}  // namespace

std::string LayoutPicture(const Container& container, const SectionRuns& runs, const Palette& palette) {
    return Picture(container, runs, palette).Text();
}

}  // namespace stmdcm
