#pragma once

#include <csignal>

namespace stmdcm {

/// While it lives, the signals with which a user ends a program wait (SIGINT, SIGTERM, SIGHUP, SIGPIPE), so that what
/// is done meanwhile is done whole or not at all. Make and destroy it on one thread.
class InterruptBlock {
  public:
    InterruptBlock();
    ~InterruptBlock();
    InterruptBlock(const InterruptBlock&) = delete;
    InterruptBlock& operator=(const InterruptBlock&) = delete;

    static sigset_t Signals();

  private:
    sigset_t m_maskBefore;
};

}  // namespace stmdcm
