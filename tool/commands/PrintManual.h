#pragma once

#include "tool/cli/Command.h"

namespace stmdcm {

/// The manual page, for the build to install.
class PrintManual final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    const CLI::App* m_program = nullptr;
};

}  // namespace stmdcm
