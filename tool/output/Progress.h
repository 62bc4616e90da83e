#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace stmdcm {

/// Tells on standard error how far something is that takes longer than a second, how fast it goes and when it will be
/// done: on a terminal in one line that is gone at the end, elsewhere, when asked for, in a line per second.
class Progress {
  public:
    enum class Unit { Bytes, Files };

    /// `what` begins the line: "Copying". Without a total nobody knows when it will be done.
    Progress(std::string what, std::optional<std::uint64_t> total, bool isAskedFor, Unit unit = Unit::Bytes);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Cheap: call it as often as it suits.
    void Update(std::uint64_t done);
    /// Call it before something else is written to the terminal.
    void Clear();

    /// Whether it is ever shown.
    static bool IsShown(bool isAskedFor);

  private:
    using Clock = std::chrono::steady_clock;

    std::string Line(std::uint64_t done, double seconds) const;
    std::string InWords(std::uint64_t amount) const;

    std::string m_what;
    std::optional<std::uint64_t> m_total;
    Unit m_unit;
    bool m_isTerminal;
    bool m_isShown;
    bool m_isLineOpen = false;
    Clock::time_point m_begin;
    Clock::time_point m_next;
};

}  // namespace stmdcm
