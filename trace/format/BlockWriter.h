#pragma once

// Writes the lines of use-case blocks (docs/use-case-blocks.md).

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Zu::Wep::Trace {

/// The longest line that is written, its line feed included.
inline constexpr std::size_t kMaxWrittenLine = 127;

/// Hears what does not read back as it was.
class BlockWriteReporter {
  public:
    virtual ~BlockWriteReporter() = default;
    /// A value that is too long for its line was cut to that many characters.
    virtual void OnValueCut(std::string_view /*key*/, std::size_t /*length*/) {}
    /// A line feed in a value was written as a blank.
    virtual void OnLineFeed(std::string_view /*key*/) {}
};

void AppendBlockLine(std::string& out, std::string_view line);

/// Appends "key=value". A value too long for its line is cut, an LF in it becomes a blank; `reporter` hears of either.
void AppendKeyLine(std::string& out, std::string_view key, std::string_view value, BlockWriteReporter& reporter);

/// Appends "key=number".
void AppendKeyLine(std::string& out, std::string_view key, std::int32_t number, BlockWriteReporter& reporter);

}  // namespace Zu::Wep::Trace
