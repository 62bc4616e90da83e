// Runs the benchmarks interleaved. Ends with 1 where a limit is not held.

#include <cstdlib>

#include "bench/MemoryBench.h"
#include "bench/Ratios.h"

using namespace stmdcm_bench;

int main(int argc, char** argv) {
    ::setenv("HOME", "/nonexistent", 1);  // the managers measured here must not find anybody's settings
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const bool isMemoryHeld = PrintMemoryOfLoad();
    return reporter.IsAllHeld() && isMemoryHeld ? 0 : 1;
}
