#pragma once

#include "tool/model/Configuration.h"

namespace Zu::Wep::Trace {
struct StmProperty;
}

namespace stmdcm {

class Manager;

/// What the property's number means.
Unit UnitOf(const Zu::Wep::Trace::StmProperty& property);

/// Takes a configuration out of a manager, through the plug-in's interfaces alone. The object files, which those
/// don't list, are left out: see ObjectFiles.
Configuration ReadConfiguration(const Manager& manager);

}  // namespace stmdcm
