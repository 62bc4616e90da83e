#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace stmdcm {

/// Tells on standard error how far something is that takes longer than a second: on a terminal in one line that is gone
/// at the end, elsewhere, when asked for, in a line per second.
class Progress {
  public:
    /// `what` begins the line: "Copying full.tdf". The total is in bytes.
    Progress(std::string what, std::uint64_t total, bool isAskedFor);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Cheap: call it as often as it suits.
    void Update(std::uint64_t done);

  private:
    using Clock = std::chrono::steady_clock;

    std::string m_what;
    std::uint64_t m_total;
    bool m_isTerminal;
    bool m_isShown;
    bool m_isLineOpen = false;
    Clock::time_point m_next;
};

}  // namespace stmdcm
