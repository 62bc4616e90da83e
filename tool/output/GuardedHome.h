#pragma once

#include <string>

#include "stmdcm/capture/InterruptBlock.h"
#include "stmdcm/plugin/TraceHome.h"
#include "tool/output/InterruptGuard.h"

namespace stmdcm {

/// A home for the plug-in that goes also when the user interrupts the program.
class GuardedHome : public TraceHome {
  public:
    /// The block lasts as long as the making of this, so no interrupt comes between the directory and its guard.
    explicit GuardedHome(const std::string& keep = {}, const InterruptBlock& /*block*/ = InterruptBlock())
        : TraceHome(keep), m_guard(keep.empty() ? Path().string() : "") {}
    ~GuardedHome() { Remove(); }

  private:
    InterruptGuard m_guard;
};

}  // namespace stmdcm
