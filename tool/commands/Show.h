#pragma once

#include <string>

#include "tool/commands/Command.h"
#include "tool/model/LoadedConfiguration.h"
#include "tool/model/Selection.h"

namespace stmdcm {

/// The configuration in a capture or a settings file.
class Show final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    Selection SelectionFor(const LoadedConfiguration& loaded) const;

    std::string m_file;
    bool m_properties = false;
    bool m_usecases = false;
    bool m_objectFiles = false;
    bool m_changedOnly = false;
};

}  // namespace stmdcm
