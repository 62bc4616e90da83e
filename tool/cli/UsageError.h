#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace stmdcm {

/// What standard error says about a wrong command line: a sentence, with the nearest right word where one is close,
/// and where there is help. `app` is the whole program's, after its parse.
std::string UsageError(const CLI::App& app, const CLI::Error& error);

}  // namespace stmdcm
