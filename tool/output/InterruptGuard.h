#pragma once

#include <array>
#include <atomic>
#include <string>

namespace stmdcm {

/// Cleans up when the user interrupts or ends the program: while the guard lives, a SIGINT, SIGTERM, SIGHUP or SIGPIPE,
/// unless the program was started with it ignored, removes the path and says the last words before it does what it
/// always does; but for a StopRequest. Other signals are left alone. For the program's only thread.
class InterruptGuard {
  public:
    /// A file, or a directory with everything in it, which need not be there yet. Empty: there is nothing to remove.
    explicit InterruptGuard(std::string path = {});
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    /// What standard error is to say then, in the place of what it was to say before. Without a call into the system.
    void SetLastWords(std::string words);

    /// For a process that was forked off: all that are there are those of its parent.
    static void ForgetAll() { s_last = nullptr; }

  private:
    static void CleanUpAndEnd(int number);
    static void TakeSignals();

    static InterruptGuard* s_last;  ///< the head of a list

    std::string m_path;
    std::array<std::string, 2> m_words;             ///< one of which may be changed
    std::atomic<const std::string*> m_lastWords{};  ///< the other; null: none
    InterruptGuard* m_before;
};

}  // namespace stmdcm
