#pragma once

#include "stmdcm/reading/BlockFindings.h"
#include "stmdcm/reading/Configuration.h"

namespace stmdcm {

/// Finds what is odd about the use cases that were read of a text (docs/check.md). The lines of their blocks are in
/// `read`.
void TellUsecases(const Configuration& configuration, const BlockFindings& read, const Place& place,
                  Findings& findings);

}  // namespace stmdcm
