#pragma once

#include <cstddef>
#include <string>

#include "tool/cli/Command.h"

namespace stmdcm {

/// An earlier configuration of a capture in force again.
class Restore final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    std::string m_file;
    std::size_t m_number = 0;
};

}  // namespace stmdcm
