#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"
#include "tool/cli/Command.h"

namespace stmdcm {

/// A configuration out of one kind of file into a new one of another kind.
class Convert final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    void CheckKinds() const;
    /// What the other kind of file has no place for.
    std::vector<std::string> LostFrom(const Reading& source) const;

    std::string m_from;
    std::string m_to;
    bool m_force = false;
};

}  // namespace stmdcm
