#pragma once

#include <string>
#include <vector>

#include "tool/cli/Command.h"

namespace stmdcm {

class Manager;
struct LiveConfiguration;

/// The configuration of a live target.
class Live final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    void ChooseFactory() const;
    void CheckSave() const;
    bool SavesIntoCapture() const;
    /// Adds to the doubts what could not be kept.
    void Save(Manager& manager, LiveConfiguration& live) const;
    void AppendTo(Manager& manager, LiveConfiguration& live) const;

    std::string m_cpu;
    std::string m_factoryDirectory;
    std::string m_scenario;
    std::string m_save;
    bool m_force = false;
};

}  // namespace stmdcm
