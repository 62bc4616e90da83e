#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <span>
#include <vector>

#include "tool/cli/Command.h"

namespace stmdcm {

/// The tool's command line with every command of a table in it.
class CommandLine {
  public:
    explicit CommandLine(std::span<const CommandEntry> commands);
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    const CLI::App& Syntax() const { return m_app; }

    /// Parses the arguments and runs the command that they name; help and usage errors are printed.
    ExitStatus Run(int argc, const char* const* argv);

  private:
    void DeclareGlobals();
    void DeclareCommand(const CommandEntry& entry);
    ExitStatus EndParsing(const CLI::ParseError& error) const;
    ExitStatus RunChosen();
    void RequireEffect() const;

    CLI::App m_app;
    GlobalOptions m_options;
    std::vector<std::unique_ptr<Command>> m_commands;
    Command* m_chosen = nullptr;
    const char* m_chosenName = nullptr;
};

}  // namespace stmdcm
