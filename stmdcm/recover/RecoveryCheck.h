#pragma once

#include <string>

#include "stmdcm/recover/RecoveryPlan.h"

namespace stmdcm {

/// Reads the new capture as readers do and adds to the plan's remarks what is wrong with it: sections that are not
/// there as they were written, and every error that `check` finds. What the file is called does not matter. Throws
/// Failure when it can't be read.
void CheckRecovery(const std::string& result, RecoveryPlan& plan);

}  // namespace stmdcm
