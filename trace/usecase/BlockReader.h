#pragma once

// Reads use-case blocks (docs/use-case-blocks.md) out of a stream of lines.

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>

namespace Zu::Wep::Trace {

inline constexpr std::size_t MaxBlockLine = 255;
inline constexpr std::string_view BlockOpen = "{";
inline constexpr std::string_view BlockClose = "}";
inline constexpr std::string_view FormulaOpen = "/$";
inline constexpr std::string_view FormulaClose = "$/";
/// What a reader drops from the end of a line.
inline constexpr char TrailingBlanks[] = " \t\r\n";

/// Reads one line of any length, without its trailing blanks, tabs, CR and LF. A zero byte ends the text of the line.
/// Returns false for a blank line just as for the end of the input: a blank line ends a scan (docs/use-case-blocks.md).
/// At the end of the input `line` becomes empty, or stays as it was on a stream that had ended or failed before. The
/// stream's state and position are those that `std::getline` leaves; memory that runs out is `std::bad_alloc`.
bool ReadBlockLine(std::string& line, std::istringstream& in);

/// `ReadBlockLine` into a buffer of `size` + 1 bytes; a longer line is cut to `size` characters.
bool myfgets(char* dst, int size, std::istringstream& in);

/// Reads up to and including the next line that begins with "{". A `line` that is exactly "{" is that line already.
/// Returns 0 found, 1 end of input or a blank line first.
int SearchForNextBlock(const char* line, std::istringstream& in);

/// A line split at its first "="; both parts point into the line, neither is trimmed.
struct KeyLine {
    std::string_view key;
    const char* value = "";
};

/// Returns 0 split, 1 no "=" in the line, -1 line too long; `out` is only set for 0.
int SplitKeyLine(const char* line, KeyLine& out);

enum class LineResult { Next, BlockDone, Bad };

/// Reads one block. `accepts(firstLine)` tells whether the block is of the reader's kind, `process(line)` handles every
/// line between the braces and returns a `LineResult`. Returns 0 read, 1 no block of this kind here, -1 bad block.
template <class Accepts, class Process>
int ReadBlock(const char* line, std::istringstream& in, Accepts accepts, Process process) {
    if (SearchForNextBlock(line, in) != 0) {
        return 1;
    }
    std::string current;
    for (bool first = true; ReadBlockLine(current, in); first = false) {
        if (current == BlockClose) {
            return 0;
        }
        if (first && !accepts(current)) {
            return 1;
        }
        const LineResult result = process(current);
        if (result != LineResult::Next) {
            return result == LineResult::BlockDone ? 0 : -1;
        }
    }
    return -1;
}

}  // namespace Zu::Wep::Trace
