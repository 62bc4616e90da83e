#include "bench/Ratios.h"

#include <fmt/format.h>

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

std::vector<std::pair<std::string, std::vector<CounterLimit>>>& CounterLimits() {
    static std::vector<std::pair<std::string, std::vector<CounterLimit>>> limits;
    return limits;
}

}  // namespace

Limited::Limited(std::string benchmark, std::vector<CounterLimit> limits) {
    CounterLimits().emplace_back(std::move(benchmark), std::move(limits));
}

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
        if (!run.error_occurred && (run.aggregate_name == "median" || run.repetitions == 1)) {
            m_medians[name.substr(0, slash)][name.substr(slash + 1)] = run.GetAdjustedRealTime();
            m_counters[name] = run.counters;
        }
    }
}

void RatioReporter::Finalize() {
    ShowRatios();
    ShowCounters();
}

void RatioReporter::Hold(const std::string& line, bool isHeld) {
    m_isAllHeld = m_isAllHeld && isHeld;
    std::printf("%s: %s\n", line.c_str(), isHeld ? "held" : "NOT HELD");
}

void RatioReporter::ShowCounters() {
    for (const auto& [name, limits] : CounterLimits()) {
        const auto counters = m_counters.find(name);
        for (const CounterLimit& limit : limits) {
            if (counters != m_counters.end()) {
                const double value = counters->second.at(limit.counter).value;
                Hold(fmt::format("  {:<44} {:<36} {:6.2f}  {:g} to {:g}", name, limit.counter, value, limit.least,
                                 limit.most),
                     value >= limit.least && value <= limit.most);
            }
        }
    }
}

void RatioReporter::ShowRatios() {
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
            Hold(fmt::format("  {:<44} {:<36} {:6.2f}  at most {:.2f}", what, limit.peer, ratio, limit.ratio),
                 ratio <= limit.ratio);
        }
    }
}

}  // namespace stmdcm_bench
