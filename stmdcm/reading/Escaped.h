#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace stmdcm {

// Text from outside on a terminal. The standard library alone, since the simulator has this source, too.

/// Text that comes from outside, in one line that no terminal obeys: control bytes, the control characters U+0080 to
/// U+009F and bytes that are no UTF-8 become \xNN. What was escaped stays as it is.
std::string Escaped(std::string_view text);
bool IsUtf8(std::string_view text);

struct Character {
    std::size_t length;  ///< in bytes
    bool isValid = true;
    bool isPrintable = true;
};

/// Of a text that is not empty. What is no UTF-8 (utf-8(7)) goes byte by byte.
Character FirstCharacter(std::string_view text);

}  // namespace stmdcm
