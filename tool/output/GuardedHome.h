#pragma once

#include <string>

#include "stmdcm/plugin/TraceHome.h"
#include "tool/output/InterruptGuard.h"

namespace stmdcm {

/// A home for the plug-in that goes also when the user interrupts the program.
class GuardedHome : public TraceHome {
  public:
    explicit GuardedHome(const std::string& keep = {}) : TraceHome(keep) {}
    ~GuardedHome() { Remove(); }

  private:
    InterruptGuard m_guard{[this] { Remove(); }};
};

}  // namespace stmdcm
