#pragma once

// Writes the lines of use-case blocks (docs/use-case-blocks.md).

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Zu::Wep::Trace {

/// The longest line that is written, its line feed included.
inline constexpr std::size_t MaxWrittenLine = 127;

void AppendBlockLine(std::string& out, std::string_view line);

/// Appends "key=value". A value too long for its line is cut, an LF in it becomes a blank; either is logged.
void AppendKeyLine(std::string& out, std::string_view key, std::string_view value);

/// Appends "key=number".
void AppendKeyLine(std::string& out, std::string_view key, std::int32_t number);

}  // namespace Zu::Wep::Trace
