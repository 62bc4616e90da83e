#pragma once

// Reads use-case blocks (docs/use-case-blocks.md) out of lines.

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string_view>

#include "trace/format/BlockLines.h"

namespace Zu::Wep::Trace {

inline constexpr std::size_t kMaxBlockLine = 255;
inline constexpr std::string_view kBlockOpen = "{";
inline constexpr std::string_view kBlockClose = "}";
inline constexpr std::string_view kFormulaOpen = "/$";
inline constexpr std::string_view kFormulaClose = "$/";

/// A line without what no reader of blocks sees at its end.
inline std::string_view StripBlanks(std::string_view line) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!line.empty() && isBlank(line.back())) {
        line.remove_suffix(1);
    }
    return line;
}

/// The text of a line as the readers of blocks take it: without what is blank at its end, and up to a zero byte.
inline std::string_view StripBlockLine(std::string_view line) {
    line = StripBlanks(line);
    return line.substr(0, line.find('\0'));
}

/// Reads up to and including the next line that begins with "{". A `line` that is exactly "{" is that line already.
/// Returns 0 found, 1 end of input or a blank line first.
int SearchForNextBlock(std::string_view line, BlockLines& in);

/// A line split at its first "="; both parts point into the line, neither is trimmed.
struct KeyLine {
    std::string_view key;
    std::string_view value;
};

/// Returns 0 split, 1 no "=" in the line, -1 line too long; `out` is only set for 0.
inline int SplitKeyLine(std::string_view line, KeyLine& out) {
    if (line.size() > kMaxBlockLine) {
        return -1;
    }
    const auto equals = std::find(line.begin(), line.end(), '=');  // keys are too short for a call of memchr to pay
    if (equals == line.end()) {
        return 1;
    }
    const auto size = static_cast<std::size_t>(equals - line.begin());
    out = {line.substr(0, size), line.substr(size + 1)};
    return 0;
}

/// What becomes of a block behind one of its lines.
enum class LineResult { Next, BlockDone, NoEquals, TooLong };

/// The same for what the readers of lines return: 0 handled, 1 no "=", -1 too long.
inline LineResult ToLineResult(int result) {
    return result == 0 ? LineResult::Next : result > 0 ? LineResult::NoEquals : LineResult::TooLong;
}

/// Reads one block. `accepts(firstLine)` tells whether the block is of the reader's kind, `process(line)` handles every
/// line between the braces, reads on as it needs, with `line` the last that it read, and returns a `LineResult`.
/// Returns 0 read, 1 no block of this kind here, -1 bad block.
template <class Accepts, class Process>
int ReadBlock(std::string_view line, BlockLines& in, Accepts accepts, Process process) {
    if (SearchForNextBlock(line, in) != 0) {
        return 1;
    }
    std::string_view current;
    for (bool isFirst = true; in.Next(current); isFirst = false) {
        if (current == kBlockClose) {
            in.Tell(&TextReporter::OnBlockRead);
            return 0;
        }
        if (isFirst && !accepts(current)) {
            in.Tell(&TextReporter::OnBlockPassed, current);
            return 1;
        }
        switch (process(current)) {
            case LineResult::Next:
                break;
            case LineResult::BlockDone:
                in.Tell(&TextReporter::OnBlockRead);
                return 0;
            case LineResult::NoEquals:
                in.Tell(&TextReporter::OnBlockDropped, BlockFault::NoEquals, current);
                return -1;
            case LineResult::TooLong:
                in.Tell(&TextReporter::OnBlockDropped, BlockFault::LineTooLong, current);
                return -1;
        }
    }
    in.Tell(&TextReporter::OnBlockDropped, in.IsAtEnd() ? BlockFault::TextEnds : BlockFault::BlankLine, current);
    return -1;
}

}  // namespace Zu::Wep::Trace
