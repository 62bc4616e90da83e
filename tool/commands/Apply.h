#pragma once

#include <string>
#include <vector>

#include "stmdcm/change/ConfigurationChange.h"
#include "tool/cli/Command.h"

namespace stmdcm {

/// The configuration of one file into many captures.
class Apply final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    struct Outcome;

    Outcome ApplyTo(const ConfigurationChange& change, const std::string& capture) const;

    std::string m_source;
    std::vector<std::string> m_captures;
    bool m_dryRun = false;
    bool m_force = false;
};

}  // namespace stmdcm
