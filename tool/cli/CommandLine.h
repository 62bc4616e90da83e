#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <vector>

#include "tool/cli/Command.h"

namespace stmdcm {

/// The tool's command line with every command in it.
class CommandLine {
  public:
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    const CLI::App& Syntax() const { return m_app; }

    /// Parses the arguments and runs the command that they name; help and usage errors are printed.
    ExitStatus Run(int argc, const char* const* argv);

  private:
    void DeclareGlobals();
    void DeclareCommands();
    ExitStatus RunChosen();

    CLI::App m_app;
    GlobalOptions m_options;
    std::vector<std::unique_ptr<Command>> m_commands;
    Command* m_chosen = nullptr;
};

}  // namespace stmdcm
