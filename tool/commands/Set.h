#pragma once

#include <string>
#include <vector>

#include "tool/cli/Command.h"

namespace stmdcm {

/// Changes properties of a capture, in place, or of a settings file.
class Set final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    std::string m_file;
    std::vector<std::string> m_assignments;
    bool m_force = false;
};

}  // namespace stmdcm
