#pragma once

#include <string>
#include <vector>

#include "stmdcm/change/Assignment.h"
#include "stmdcm/change/ConfigurationChange.h"

namespace stmdcm {

/// New values of properties, for captures and for settings files.
class PropertyChange {
  public:
    /// Each is a "NAME=VALUE" (Assignment). Throws Failure, of kind Request, for a property that is given twice.
    explicit PropertyChange(const std::vector<std::string>& texts);

    /// Into a capture, in place (ConfigurationChange), or a settings file (SetInSettings), for which alone `force` is.
    /// Throws Failure.
    ChangeResult In(const std::string& file, bool force, ChangeMode mode = ChangeMode::Write) const;

  private:
    std::vector<Assignment> m_assignments;
};

}  // namespace stmdcm
