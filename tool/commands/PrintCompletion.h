#pragma once

#include <string>

#include "tool/cli/Command.h"

namespace stmdcm {

/// The script that completes this program's command lines in a shell.
class PrintCompletion final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    std::string m_shell;
};

}  // namespace stmdcm
