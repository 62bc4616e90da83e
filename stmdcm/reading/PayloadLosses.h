#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Findings.h"

namespace stmdcm {

/// What of the payload of a configuration section, DCM_COMMON or STMDECODERINFO, is not read once the section is in
/// force: in sentences, as `Reading::Losses` has them. `place` names the section and its offset.
std::vector<std::string> PayloadLosses(const Place& place, const std::string& payload);

}  // namespace stmdcm
