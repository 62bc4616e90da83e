#pragma once

#include <string_view>

namespace stmdcm {

/// The shells that there is a script for, by the names of their programs.
inline constexpr const char* kShells[] = {"bash", "zsh", "fish"};

/// The script that makes `shell`, one of those, complete this program's command lines. It knows no command: it asks the
/// program that stands on the line what its words can go on with, see CompleteWords.
std::string_view CompletionScript(std::string_view shell);

}  // namespace stmdcm
