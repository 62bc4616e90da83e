// Runs the benchmarks of the tool. Ends with 1 where a limit is not held.

#include "bench/Ratios.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    stmdcm_bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return reporter.IsAllHeld() ? 0 : 1;
}
