#pragma once

#include <string>

#include "tool/cli/Command.h"

namespace stmdcm {

/// What is different in the configurations of two files.
class Diff final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    std::string m_left;
    std::string m_right;
};

}  // namespace stmdcm
