#pragma once

#include <memory>
#include <string>

#include "sim/Scenario.h"

namespace stmdcm_sim {

/// Reads the scenario file `path` (docs/scenario.md). Throws vornError with a message that names file, line and field
/// when it can't be read or is not as it has to be.
std::unique_ptr<Scenario> ReadScenario(const std::string& path);

}  // namespace stmdcm_sim
