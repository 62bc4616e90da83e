#pragma once

#include <string>
#include <vector>

#include "tool/cli/Command.h"

namespace stmdcm {

/// Tells what the lenient readers pass over in silence (docs/check.md).
class Check final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    std::vector<std::string> m_files;
    std::string m_kind;
    std::string m_severity = "note";
    bool m_list = false;
};

}  // namespace stmdcm
