#pragma once

#include <cstdint>

#include "stmdcm/recover/RecoveryPlan.h"
#include "trace/format/SectionSource.h"

namespace stmdcm {

/// Walks the new capture as a reader does and adds to the plan's remarks what is wrong with it: sections that are not
/// there or can't be reached, and sections without which hosts can't load a configuration. `size` is that of the file.
void CheckRecovery(Zu::Wep::Trace::SectionSource& result, std::uint64_t size, RecoveryPlan& plan);

}  // namespace stmdcm
