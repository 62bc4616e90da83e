// Runs every benchmark and closes with each of ours against its peers of the same run, as ratios of their times.
// A family is named "what/ours" and "what/peer: which".

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace {

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const std::string name = run.run_name.function_name;
            const auto slash = name.find('/');
            if (slash != std::string::npos && !run.error_occurred) {
                m_times[name.substr(0, slash)][name.substr(slash + 1)] = run.GetAdjustedRealTime();
            }
        }
    }

    void Finalize() override {
        std::puts("\nOurs against its peers (time of the peer / time of ours; above 1 we are faster)");
        for (const auto& [what, times] : m_times) {
            const auto ours = times.find("ours");
            for (const auto& [which, time] : times) {
                if (ours != times.end() && which != "ours") {
                    std::printf("  %-28s %-62s %6.2f\n", what.c_str(), which.c_str(), time / ours->second);
                }
            }
        }
    }

  private:
    std::map<std::string, std::map<std::string, double>> m_times;
};

}  // namespace

int main(int argc, char** argv) {
    ::setenv("HOME", "/nonexistent", 1);  // the managers measured here must not find anybody's settings
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
