#include "tool/change/UnreadText.h"

#include <fmt/format.h>

#include <cstdlib>
#include <map>

#include "tool/model/Words.h"

namespace stmdcm {

namespace {

constexpr std::size_t kMaxListed = 10;
constexpr std::string_view kPackedStart = "{type";

/// How often a kind of line is there, and where first. Lines are of one kind when they have the same key.
struct Occurrence {
    std::size_t count = 0;
    std::size_t line = 0;
};

class BlockLines {
  public:
    explicit BlockLines(std::string_view text) {
        for (std::size_t number = 1; !text.empty(); ++number) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            Take(text.substr(0, end), number);
            text.remove_prefix(std::min(end + 1, text.size()));
        }
    }

    const std::map<std::string, Occurrence>& Kinds() const { return m_kinds; }

    std::size_t Count(const std::string& kind) const {
        const auto found = m_kinds.find(kind);
        return found == m_kinds.end() ? 0 : found->second.count;
    }

  private:
    void Take(std::string_view line, std::size_t number) {
        line = line.substr(0, line.find_last_not_of(" \t\r") + 1);
        m_begun = m_begun || line.starts_with('{');  // Before that there are properties.
        if (!m_begun) {
            return;
        }
        if (line.starts_with(kPackedStart)) {
            TakePacked(line.substr(1), number);
        } else {
            Add(line, number);
        }
    }

    void TakePacked(std::string_view fields, std::size_t number) {
        Add("{", number);
        fields.remove_suffix(1);
        while (!fields.empty()) {
            const std::size_t end = std::min(fields.find(','), fields.size());
            Add(fields.substr(0, end), number);
            fields.remove_prefix(std::min(end + 1, fields.size()));
        }
        Add("}", number);
    }

    void Add(std::string_view line, std::size_t number) {
        std::string kind(line.substr(0, line.find('=')));
        if (kind.empty() || line == "type=SC") {  // which the writer leaves out
            return;
        }
        if (kind.front() == '#') {
            kind = fmt::format("#{}", static_cast<std::int32_t>(std::strtol(kind.c_str() + 1, nullptr, 10)));
        }
        Occurrence& occurrence = m_kinds[kind];
        if (occurrence.count++ == 0) {
            occurrence.line = number;
        }
    }

    std::map<std::string, Occurrence> m_kinds;
    bool m_begun = false;
};

void Shorten(std::vector<std::string>& sentences) {
    if (sentences.size() > kMaxListed) {
        const std::size_t more = sentences.size() - kMaxListed;
        sentences.resize(kMaxListed);
        sentences.push_back(fmt::format("and so are {} more kinds of lines", more));
    }
}

}  // namespace

std::vector<std::string> UnreadBlocks(std::string_view text, std::string_view rewritten) {
    const BlockLines old(text);
    const BlockLines read(rewritten);
    const std::size_t blocks = old.Count("{");
    const bool areBlocksLost = blocks > read.Count("{");
    std::vector<std::string> sentences;
    if (areBlocksLost) {
        sentences.push_back(fmt::format("{} of {} use-case blocks are not read", blocks - read.Count("{"), blocks));
    }
    for (const auto& [kind, occurrence] : old.Kinds()) {
        const std::size_t count = read.Count(kind);
        const std::string words = InWords(Unit::None, kind);
        if (count == 0 && kind != "{" && kind != "}") {
            sentences.push_back(fmt::format("line {}, \"{}\", is not read", occurrence.line, words));
        } else if (count < occurrence.count && !areBlocksLost) {
            sentences.push_back(
                fmt::format("{} of {} lines \"{}\" are not read", occurrence.count - count, occurrence.count, words));
        }
    }
    Shorten(sentences);
    return sentences;
}

}  // namespace stmdcm
