#pragma once

#include "stmdcm/capture/ByteSink.h"
#include "stmdcm/capture/CaptureFile.h"
#include "stmdcm/capture/CopyRange.h"
#include "stmdcm/recover/RecoveryPlan.h"

namespace stmdcm {

enum class Payloads {
    All,
    OfConfiguration  ///< zeros for the others: who reads a configuration can't tell, and it takes little room
};

/// Writes the new capture. Throws Failure.
void WriteRecovery(const CaptureFile& from, const RecoveryPlan& plan, Payloads payloads, ByteSink& to,
                   const OnCopied& onCopied);

}  // namespace stmdcm
