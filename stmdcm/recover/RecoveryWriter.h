#pragma once

#include "stmdcm/capture/ByteSink.h"
#include "stmdcm/capture/CaptureFile.h"
#include "stmdcm/capture/CopyRange.h"
#include "stmdcm/recover/RecoveryPlan.h"

namespace stmdcm {

/// Writes the new capture. Throws Failure.
void WriteRecovery(const CaptureFile& from, const RecoveryPlan& plan, ByteSink& to, const OnCopied& onCopied);

}  // namespace stmdcm
