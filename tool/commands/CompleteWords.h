#pragma once

#include <string>
#include <vector>

#include "tool/cli/Command.h"

namespace stmdcm {

/// Tells a completion script what a command line can go on with.
class CompleteWords final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    const CLI::App* m_program = nullptr;
    std::vector<std::string> m_words;
};

}  // namespace stmdcm
