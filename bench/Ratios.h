#pragma once

// Families of benchmarks: ours and its peers, which do the same work on the same data in the same run.

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace stmdcm_bench {

inline constexpr char kOurs[] = "ours";
inline constexpr char kBestPeer[] = "the best of them";

struct Contender {
    std::string name;
    std::function<void(benchmark::State&)> run;
};

/// The most that ours may take of a peer's time, or of the best peer's.
struct Limit {
    std::string peer;
    double ratio = 0;
};

/// What a counter of a benchmark may be, of the median of its iterations.
struct CounterLimit {
    std::string counter;
    double least = 0;
    double most = 0;
};

/// Gives a benchmark's counters limits.
class Limited {
  public:
    Limited(std::string benchmark, std::vector<CounterLimit> limits);
};

/// Manual: a contender states each iteration's time itself.
enum class Timing { Real, Manual };

/// Registers its contenders.
class Family {
  public:
    Family(std::string what, const std::vector<Contender>& contenders, std::vector<Limit> limits,
           Timing timing = Timing::Real);
};

/// Prints every benchmark as it ends, and at the end ours against its peers, as ratios of the medians, and the
/// counters, with the limits.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;
    /// Whether every ratio is within its limit.
    bool IsAllHeld() const { return m_isAllHeld; }

  private:
    void ShowRatios();
    void ShowCounters();
    void Hold(const std::string& line, bool isHeld);

    std::map<std::string, std::map<std::string, double>> m_medians;
    std::map<std::string, benchmark::UserCounters> m_counters;
    bool m_isAllHeld = true;
};

}  // namespace stmdcm_bench
