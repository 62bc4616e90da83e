#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace stmdcm {

/// Cleans up when the user interrupts or ends the program: while the guard lives, SIGINT, SIGTERM and SIGHUP, unless
/// the program was started with them ignored, first run `cleanUp`, on a thread of the guard's, and then do what they
/// always do. Make it before any other thread is started, since those must not get the signals.
class InterruptGuard {
  public:
    explicit InterruptGuard(std::function<void()> cleanUp);
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

  private:
    void Wait();

    std::function<void()> m_cleanUp;
    sigset_t m_signals{};
    sigset_t m_oldMask{};
    std::atomic<bool> m_ended{false};
    std::thread m_waiter;
};

}  // namespace stmdcm
