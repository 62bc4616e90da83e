#pragma once

#include <string>
#include <vector>

#include "tool/cli/Command.h"

namespace stmdcm {

/// Which program images of a capture are there, where they are now, and their new places into the capture.
class Objects final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    std::string m_file;
    std::vector<std::string> m_mappings;
    std::vector<std::string> m_directories;
    bool m_update = false;
    bool m_acceptChanged = false;
};

}  // namespace stmdcm
