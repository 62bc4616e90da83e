#include "stmdcm/reading/BlockStructure.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "trace/format/BlockReader.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

struct Line {
    std::size_t number = 0;
    std::string_view text;  ///< as the readers get it
};

std::vector<Line> SplitLines(const BlockText& blocks) {
    std::vector<Line> lines;
    std::string_view rest = blocks.text;
    for (std::size_t index = 0; !rest.empty(); ++index) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        lines.push_back({blocks.NumberOf(index), StripBlockLine(line)});
    }
    return lines;
}

class StructureCheck {
  public:
    StructureCheck(const BlockText& text, const BlockFindings& read, const Place& place, Findings& findings)
        : m_lines(SplitLines(text)), m_read(read), m_place(place), m_findings(findings) {}

    void Run() {
        bool isInside = false;
        bool isBehindFirst = false;
        for (std::size_t index = 0; index < m_lines.size(); ++index) {
            const Line& line = m_lines[index];
            if (line.text.starts_with('{')) {
                TellStray();
                TellOpener(line, index + 1 < m_lines.size() ? m_lines[index + 1] : Line{});
                isInside = isBehindFirst = true;
            } else if (isInside) {
                isInside = line.text != kBlockClose && !m_read.IsEndOfBlock(line.number);
            } else if (isBehindFirst && !line.text.empty()) {
                TakeStray(line);
            }
        }
        TellStray();
        for (std::size_t kind = 0; kind < kUsecaseKinds.size(); ++kind) {
            TellBlankEnd(static_cast<UsecaseKind>(kind));
        }
    }

  private:
    /// Lines up to a "}" are a block to a person, whatever became of its beginning.
    void TakeStray(const Line& line) {
        m_stray.push_back(line);
        m_hasStrayKey = m_hasStrayKey || line.text.find('=') != std::string_view::npos;
        if (m_hasStrayKey && line.text == kBlockClose) {
            Add(Kind("U-OUTSIDE"), m_stray.front(),
                fmt::format("{} up to the \"}}\" on line {} stand in no block", Counted(m_stray.size() - 1, "line"),
                            line.number),
                "they are not read");
            ForgetStray();
        }
    }

    void TellStray() {
        for (const Line& line : m_stray) {
            Add(Kind("U-STRAY-LINE"), line, fmt::format("{} stands between the blocks", Quoted(line.text)),
                "the line is skipped");
        }
        ForgetStray();
    }

    void ForgetStray() {
        m_stray.clear();
        m_hasStrayKey = false;
    }

    void TellOpener(const Line& opener, const Line& first) {
        if (opener.text != kBlockOpen && !opener.text.starts_with("{type")) {
            Add(Kind("U-OPENER-TEXT"), opener, fmt::format("text stands behind the brace: {}", Quoted(opener.text)),
                "what stands behind the brace is not read");
        }
        if (first.text == kBlockClose) {
            TellEmpty(opener);
            return;
        }
        std::size_t kind = 0;  // an SC block need not name its type
        if (first.text.starts_with("type")) {
            const auto* const names = std::find_if(kUsecaseKinds.begin(), kUsecaseKinds.end(),
                                                   [&](const auto& each) { return each.typeLine == first.text; });
            if (names == kUsecaseKinds.end()) {
                Add(Kind("U-UNKNOWN-TYPE"), first, fmt::format("{} is no type", Quoted(first.text)),
                    "the block is skipped");
                return;
            }
            kind = static_cast<std::size_t>(names - kUsecaseKinds.begin());
        }
        if (!m_read.Of(static_cast<UsecaseKind>(kind)).met.contains(opener.number)) {
            m_lost[kind].push_back(opener.number);
            TellNotRead(opener, kUsecaseKinds[kind].name);
        }
    }

    void TellEmpty(const Line& opener) {
        std::string kinds;
        for (std::size_t kind = 0; kind < kUsecaseKinds.size(); ++kind) {
            if (m_read.Of(static_cast<UsecaseKind>(kind)).met.contains(opener.number)) {
                kinds += fmt::format("{}{}", kinds.empty() ? "" : ", ", kUsecaseKinds[kind].name);
            }
        }
        if (kinds.empty()) {
            TellNotRead(opener, "empty");
        } else {
            Add(Kind("U-EMPTY-BLOCK"), opener, "the block is empty",
                fmt::format("a use case with all defaults of each of: {}", kinds));
        }
    }

    void TellNotRead(const Line& opener, const char* name) {
        Add(Kind("U-NOT-READ"), opener, fmt::format("the {} block that begins here is not met by its reader", name),
            "the use case is not read");
    }

    void TellBlankEnd(UsecaseKind kind) {
        const auto& blank = m_read.Of(kind).blankEnd;
        const auto& lost = m_lost[static_cast<std::size_t>(kind)];
        if (!blank) {
            return;
        }
        const auto behind = lost.end() - std::lower_bound(lost.begin(), lost.end(), *blank);
        if (behind > 0) {
            m_findings.Add(
                Kind("U-BLANK-LINE"), m_place.AtLine(*blank),
                fmt::format("a blank line ends the reading of {} use cases", NamesOf(kind).name),
                fmt::format("{} behind it are not read", Counted(static_cast<std::size_t>(behind), "use case")));
        }
    }

    void Add(const FindingKind& kind, const Line& line, std::string what, std::string effect) {
        m_findings.Add(kind, m_place.AtLine(line.number), std::move(what), std::move(effect));
    }

    const std::vector<Line> m_lines;
    const BlockFindings& m_read;
    const Place& m_place;
    Findings& m_findings;
    std::vector<Line> m_stray;  ///< between the blocks, not told yet
    bool m_hasStrayKey = false;
    std::array<std::vector<std::size_t>, kUsecaseKinds.size()> m_lost;
};

}  // namespace

void CheckStructure(const BlockText& text, const BlockFindings& read, const Place& place, Findings& findings) {
    StructureCheck(text, read, place, findings).Run();
}

}  // namespace stmdcm
