#pragma once

#include <string>

namespace stmdcm {

/// Throws Failure where standard output is that very file: what is printed would go into a file that is read, or be
/// lost with one that is replaced.
void RefuseStandardOutputIn(const std::string& file);

/// Throws Failure where what is no text would confuse a terminal.
void RefuseTerminal();

}  // namespace stmdcm
