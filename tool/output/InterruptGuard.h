#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace stmdcm {

/// Cleans up when the user interrupts or ends the program: while the guard lives, a SIGINT, SIGTERM, SIGHUP or SIGPIPE,
/// unless the program was started with it ignored, removes the path and says the last words before it does what it
/// always does; but for a StopRequest. Other signals are left alone. For the thread that takes the
/// signals, which is the only one that makes guards.
class InterruptGuard {
  public:
    /// A file, or a directory with everything in it, which need not be there yet. Empty: there is nothing to remove.
    explicit InterruptGuard(std::string path = {});
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    /// What standard error is to say then: a number, as it is at that time, between two texts.
    struct LastWords {
        std::string before = {};
        const std::atomic<std::uint64_t>* number = nullptr;  ///< borrowed; null: there is nothing to say
        std::string behind = {};
    };
    /// Once, before anything is done that can be interrupted.
    void SetLastWords(LastWords words);

    /// For a process that was forked off: all that are there are those of its parent.
    static void ForgetAll() { s_last = nullptr; }

  private:
    static void CleanUpAndEnd(int number);
    static void TakeSignals();
    void SayLastWords() const;

    static InterruptGuard* s_last;  ///< the head of a list

    std::string m_path;
    LastWords m_lastWords;
    InterruptGuard* m_before;
};

}  // namespace stmdcm
