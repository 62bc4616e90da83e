#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "stmdcm/reading/Configuration.h"
#include "stmdcm/reading/Escaped.h"

namespace stmdcm {

// How values read in text.

std::string InWords(Unit unit, std::int64_t value);
std::string InWords(Unit unit, bool value);
std::string InWords(Unit unit, std::string_view value);
std::string InWords(Unit unit, const std::optional<std::int64_t>& value);
inline std::string InWords(Unit unit, const std::string& value) { return InWords(unit, std::string_view(value)); }
inline std::string InWords(Unit unit, std::int32_t value) { return InWords(unit, std::int64_t{value}); }
inline std::string InWords(Unit unit, std::uint32_t value) { return InWords(unit, std::int64_t{value}); }

/// A name or a path, escaped and cut in the middle to kMaxColumns.
std::string Shown(std::string_view name);
inline constexpr std::size_t kMaxColumns = 80;

std::string InWords(const Property& property);
std::string DefaultInWords(const Property& property);

/// "200 MHz": exact, with as many decimals as it takes.
std::string Frequency(std::int64_t hertz);

/// "3.9 GiB", "512 bytes".
std::string SizeInWords(std::uint64_t bytes);

/// "2023-11-14T22:13:20Z", with `separator` for the "T"; the plain number for a time that no calendar holds.
std::string UtcTime(std::int64_t seconds, char separator = 'T');

}  // namespace stmdcm
