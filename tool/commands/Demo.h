#pragma once

#include <string>

#include "tool/cli/Command.h"

namespace stmdcm {

/// The main job on a capture that is shipped with the program, and the same from a live target, a simulated one.
class Demo final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    std::string m_keep;
};

}  // namespace stmdcm
