#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace stmdcm {

/// What no reader takes out of the use-case blocks (docs/use-case-blocks.md) of `text`, in sentences. `rewritten` is
/// what the plug-in writes after reading it: it has every line that was read, and no other.
std::vector<std::string> UnreadBlocks(std::string_view text, std::string_view rewritten);

}  // namespace stmdcm
