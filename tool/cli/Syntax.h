#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace stmdcm {

// What may be written on the command line, read off the very tree that the parser works with. Help, manual page,
// completions and usage errors know the commands from here alone.

/// Without those of the empty group, which are for programs.
std::vector<const CLI::App*> VisibleCommands(const CLI::App& app);
std::vector<const CLI::Option*> VisibleOptions(const CLI::App& app);
std::vector<const CLI::Option*> Positionals(const CLI::App& app);

/// "-h", "--help".
std::vector<std::string> Names(const CLI::Option& option);
bool TakesValue(const CLI::Option& option);
bool IsRepeatable(const CLI::Option& option);

/// What stands for the value: the type name if the command gave one, else a positional's own name.
std::string Placeholder(const CLI::Option& option);
/// The words that the value is one of; empty when it is not one of a list.
std::vector<std::string> Choices(const CLI::Option& option);

/// "-h, --help", "--color WHEN", "--get PROPERTY,...", "CAPTURE...".
std::string Signature(const CLI::Option& option);
/// "stmdcm show [OPTIONS] FILE".
std::string Usage(const CLI::App& app);

}  // namespace stmdcm
