#pragma once

#include <string>
#include <vector>

#include "stmdcm/change/Assignment.h"
#include "stmdcm/change/ConfigurationChange.h"

namespace stmdcm {

/// Sets properties in a settings file, which keeps every other line byte for byte (SettingsEdit) and is replaced whole.
/// A change without a value on its left adds a property that the file did not name. The new text is read back: where it
/// would mean anything else than the old one with what was asked for, that is a Failure and the file stays. So is, but
/// with `force`, a file of which nothing is read, and a property whose own line is not read.
ChangeResult SetInSettings(const std::string& path, const std::vector<Assignment>& assignments, bool force,
                           ChangeMode mode = ChangeMode::Write);

}  // namespace stmdcm
