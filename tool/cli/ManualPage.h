#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace stmdcm {

/// The manual page, in roff, of the program whose command line this is: the same texts that --help prints.
std::string ManualPage(const CLI::App& app);

}  // namespace stmdcm
