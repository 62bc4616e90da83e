#pragma once

#include <array>
#include <vector>

#include "tool/check/BlockText.h"
#include "tool/check/Findings.h"
#include "tool/check/UsecaseReader.h"

namespace stmdcm {

/// The use cases that the three readers keep, by UsecaseKind.
using UsecaseModels = std::array<std::vector<UsecaseModel>, kUsecaseKinds.size()>;

/// Checks the blocks of a settings text: what each kind's reader makes of them, and what none does.
UsecaseModels CheckBlocks(const std::vector<BlockLine>& lines, const Place& place, Findings& findings);

}  // namespace stmdcm
