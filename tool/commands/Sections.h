#pragma once

#include <string>

#include "tool/cli/Command.h"

namespace stmdcm {

/// The container of a capture.
class Sections final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    std::string m_file;
    bool m_all = false;
    bool m_picture = false;
};

}  // namespace stmdcm
