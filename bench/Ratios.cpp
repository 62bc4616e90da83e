#include "bench/Ratios.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace stmdcm_bench {

namespace {

/// In the order of registration; static objects register before main.
std::vector<std::pair<std::string, std::vector<Limit>>>& Limits() {
    static std::vector<std::pair<std::string, std::vector<Limit>>> limits;
    return limits;
}

}  // namespace

Family::Family(std::string what, const std::vector<Contender>& contenders, std::vector<Limit> limits, Timing timing) {
    for (const Contender& contender : contenders) {
        auto* registered = benchmark::RegisterBenchmark((what + "/" + contender.name).c_str(), contender.run);
        registered->Unit(benchmark::kMicrosecond);
        timing == Timing::Manual ? registered->UseManualTime() : registered->UseRealTime();
    }
    Limits().emplace_back(std::move(what), std::move(limits));
}

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        const std::string name = run.run_name.function_name;
        const auto slash = name.rfind('/');
        if (!run.error_occurred && run.aggregate_name == "median") {
            m_medians[name.substr(0, slash)][name.substr(slash + 1)] = run.GetAdjustedRealTime();
        }
    }
}

void RatioReporter::Finalize() {
    std::printf("\nWhat ours takes, over what a peer takes: medians of interleaved runs\n");
    for (const auto& [what, limits] : Limits()) {
        const auto& medians = m_medians[what];
        const auto ours = medians.find(kOurs);
        if (ours == medians.end()) {
            continue;
        }
        double best = 0;
        for (const auto& [peer, time] : medians) {
            best = peer == kOurs ? best : best == 0 ? time : std::min(best, time);
        }
        for (const auto& [peer, time] : medians) {
            if (peer != kOurs) {
                std::printf("  %-44s %-36s %6.2f\n", what.c_str(), peer.c_str(), ours->second / time);
            }
        }
        for (const Limit& limit : limits) {
            const auto peer = medians.find(limit.peer);
            const double ratio = ours->second / (peer == medians.end() ? best : peer->second);
            m_isAllHeld = m_isAllHeld && ratio <= limit.ratio;
            std::printf("  %-44s %-36s %6.2f  at most %.2f: %s\n", what.c_str(), limit.peer.c_str(), ratio, limit.ratio,
                        ratio <= limit.ratio ? "held" : "NOT HELD");
        }
    }
}

}  // namespace stmdcm_bench
