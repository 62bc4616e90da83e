#pragma once

#include "tool/capture/CaptureFile.h"
#include "tool/output/ByteSink.h"
#include "tool/output/CopyRange.h"
#include "tool/recover/RecoveryPlan.h"

namespace stmdcm {

/// Writes the new capture. Throws Failure.
void WriteRecovery(const CaptureFile& from, const RecoveryPlan& plan, ByteSink& to, const OnCopied& onCopied);

}  // namespace stmdcm
