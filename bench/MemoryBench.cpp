#include "bench/MemoryBench.h"

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "bench/ScratchCapture.h"
#include "bench/UsecaseTexts.h"
#include "trace/dcm/StmDeviceConfigManager.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"

namespace stmdcm_bench {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::size_t kTextSize = 64 << 20;
constexpr double kMiB = 1 << 20;

struct Use {
    double peak = 0;
    double kept = 0;
};

std::size_t Resident() {
    std::ifstream statm("/proc/self/statm");
    std::size_t total = 0, resident = 0;
    statm >> total >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

Use UseOfLoad(const std::string& path) {
    CPUInfo cpu{"bench", 0, 0, 0};
    StmDeviceConfigManager manager(&cpu, nullptr);
    const std::size_t before = Resident();
    const std::size_t heldBefore = ::mallinfo2().uordblks + ::mallinfo2().hblkhd;
    if (!manager.LoadConfiguration(path, TRACE_DATA_FILE_TDF)) {
        std::abort();
    }
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const std::size_t held = ::mallinfo2().uordblks + ::mallinfo2().hblkhd;
    return {(static_cast<double>(usage.ru_maxrss) * 1024 - static_cast<double>(before)) / kMiB,
            static_cast<double>(held - heldBefore) / kMiB};
}

}  // namespace

bool PrintMemoryOfLoad() {
    ScratchFile capture(".tdf");
    {
        std::string text = "STM_DTC_target_pins = 4\n";
        const std::string blocks = UsecaseText(1000);
        while (text.size() + blocks.size() < kTextSize) {
            text += blocks;
        }
        capture.Append(kTDFIdentifier);
        capture.Append(SectionOf(kCommonSection, "a"));
        capture.Append(SectionOf(kDeviceSection, "STM_ATB_Id=33\n"));
        capture.Append(SectionOf(kStmSection, text));
        text.clear();
        text.shrink_to_fit();
    }
    ::malloc_trim(0);
    int pipes[2];
    if (::pipe(pipes) != 0) std::abort();
    const pid_t child = ::fork();  // its peak counts from here
    if (child == 0) {
        const Use use = UseOfLoad(capture.Path());
        ::_exit(::write(pipes[1], &use, sizeof use) == sizeof use ? 0 : 1);
    }
    Use use;
    if (::read(pipes[0], &use, sizeof use) != sizeof use) std::abort();
    ::waitpid(child, nullptr, 0);
    constexpr double kLimit = 4;
    const double above = use.peak - use.kept - kTextSize / kMiB;
    std::printf(
        "\nMemory of a load of 64 MiB of use cases: %.1f MiB at the peak, of which the values kept are %.1f and the "
        "text 64;\n  %.1f above them, at most %.0f: %s\n",
        use.peak, use.kept, above, kLimit, above <= kLimit ? "held" : "NOT HELD");
    return above <= kLimit;
}

}  // namespace stmdcm_bench
