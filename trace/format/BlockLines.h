#pragma once

#include <cstddef>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "trace/format/TextReporter.h"

namespace Zu::Wep::Trace {

/// A text of use-case blocks, and where its lines stand in the settings text that it was taken from.
struct BlockText {
    std::string_view text;
    std::size_t firstLine = 1;
    std::vector<std::size_t> lines = {};  ///< one for each line, where they don't just follow each other

    std::size_t NumberOf(std::size_t index) const { return index < lines.size() ? lines[index] : firstLine + index; }
};

/// Takes the lines off a text of use-case blocks, for the record of one kind. Lines are views into the text.
class BlockLines {
  public:
    /// Borrows both; without a reporter nobody hears what is met.
    BlockLines(UsecaseKind kind, const BlockText& text, TextReporter* reporter)
        : m_kind(kind), m_text(&text), m_rest(text.text), m_reporter(reporter) {}
    /// Reads what is left of the stream's own buffer, and leaves the stream in the state and at the position in which
    /// std::getline does.
    BlockLines(UsecaseKind kind, std::istringstream& in);
    ~BlockLines() { MoveStream(); }
    BlockLines(const BlockLines&) = delete;
    BlockLines& operator=(const BlockLines&) = delete;

    /// Gives the next line, of any length, without its trailing blanks, tabs, CR and LF; a zero byte ends its text.
    /// False for a blank line just as for the end of the text: a blank line ends a scan. `line` is empty then.
    bool Next(std::string_view& line);

    /// Whether the last call met the end of the text, not a blank line.
    bool IsAtEnd() const { return m_isAtEnd; }

    /// The number of the line that was given last; 0 before the first.
    std::size_t Number() const { return m_count == 0 ? 0 : m_text->NumberOf(m_count - 1); }

    /// Tells what is met on the line that was given last.
    template <class... Expected, class... Told>
    void Tell(void (TextReporter::*callback)(UsecaseKind, std::size_t, Expected...), Told&&... told) const {
        if (m_reporter != nullptr) {
            (m_reporter->*callback)(m_kind, Number(), std::forward<Told>(told)...);
        }
    }
    template <class... Expected, class... Told>
    void Tell(void (TextReporter::*callback)(std::size_t, Expected...), Told&&... told) const {
        if (m_reporter != nullptr) {
            (m_reporter->*callback)(Number(), std::forward<Told>(told)...);
        }
    }

  private:
    void FindZero(std::size_t end);
    void MoveStream();
    void EndStream(std::ios_base::iostate state);

    static const BlockText kStreamText;

    UsecaseKind m_kind;
    const BlockText* m_text;
    std::string_view m_rest;
    std::size_t m_free = 0;  ///< how much of it is known to hold no zero byte
    TextReporter* m_reporter = nullptr;
    std::istringstream* m_in = nullptr;
    std::size_t m_moved = 0;  ///< how much of the text was left when the stream was moved last
    std::size_t m_count = 0;
    bool m_isEnded = false;
    bool m_isAtEnd = false;
};

}  // namespace Zu::Wep::Trace
