#pragma once

#include <string_view>

namespace stmdcm {

/// The device identification of a capture that no host has made: one line, of no property (docs/settings-text.md).
inline constexpr std::string_view kNoDeviceText = "written_by=stmdcm\n";

/// What a working capture holds for a text that may be empty: hosts load no empty DEVID or STMDECODERINFO
/// (docs/tdf.md), and a line feed alone sets nothing.
inline std::string_view LoadableText(std::string_view text) { return text.empty() ? "\n" : text; }

}  // namespace stmdcm
