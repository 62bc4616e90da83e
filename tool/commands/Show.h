#pragma once

#include <string>

#include "stmdcm/reading/Reading.h"
#include "tool/cli/Command.h"
#include "tool/render/Selection.h"

namespace stmdcm {

/// The configuration in a capture or a settings file.
class Show final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    Selection SelectionFor(const Reading& loaded) const;

    std::string m_file;
    bool m_properties = false;
    bool m_usecases = false;
    bool m_objectFiles = false;
    bool m_changedOnly = false;
};

}  // namespace stmdcm
