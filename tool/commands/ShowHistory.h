#pragma once

#include <string>

#include "tool/cli/Command.h"

namespace stmdcm {

/// The command "history": earlier configurations in a capture.
class ShowHistory final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    std::string m_file;
};

}  // namespace stmdcm
