// Many small captures through the tool and through the Python module, against a bare loop over the library that loads
// each. Needs the tool beside this program. Counters: CPU time as a multiple of the loop's, milliseconds to the first
// line, peak memory.

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "bench/Ratios.h"
#include "stmdcm/reading/Reading.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kCaptures = 10'000;

/// A directory of captures, and a list of them; gone at the end.
class Captures {
  public:
    explicit Captures(int count) : m_directory(fs::temp_directory_path() / ("stmdcm-bench-" + std::to_string(count))) {
        fs::create_directories(m_directory);
        std::ofstream list(List());
        for (int i = 0; i < count; ++i) {
            const fs::path path = m_directory / (std::to_string(i) + ".tdf");
            fs::copy_file(STMDCM_BENCH_DATA "/packed.tdf", path, fs::copy_options::overwrite_existing);
            list << path.string() << "\n";
        }
    }
    ~Captures() { fs::remove_all(m_directory); }
    Captures(const Captures&) = delete;
    Captures& operator=(const Captures&) = delete;

    std::string List() const { return m_directory / "list"; }

  private:
    fs::path m_directory;
};

/// What a process took, and its children.
struct Cost {
    double cpu = 0;     ///< seconds
    double wall = 0;    ///< seconds
    double first = 0;   ///< seconds to the first byte of output
    double memory = 0;  ///< MiB
};

/// Runs `work` in a child, whose standard output is read.
template <class Work>
Cost Measure(Work work) {
    int ends[2];
    if (::pipe(ends) != 0) {
        return {};
    }
    const Clock::time_point begin = Clock::now();
    const auto passed = [&] { return std::chrono::duration<double>(Clock::now() - begin).count(); };
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        work();
        ::_exit(0);
    }
    ::close(ends[1]);
    Cost cost;
    char buffer[65536];
    for (ssize_t count = 0; (count = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
        cost.first = cost.first == 0 ? passed() : cost.first;
    }
    ::close(ends[0]);
    int status = 0;
    rusage used{};
    ::wait4(child, &status, 0, &used);
    cost.wall = passed();
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    cost.cpu = seconds(used.ru_utime) + seconds(used.ru_stime);
    cost.memory = static_cast<double>(used.ru_maxrss) / 1024;
    return cost;
}

Cost MeasureLoop(const Captures& captures) {
    return Measure([&] {
        std::ifstream list(captures.List());
        std::size_t properties = 0;
        for (std::string path; std::getline(list, path);) {
            properties += stmdcm::Read(path).configuration.properties.size();
        }
        std::printf("%zu\n", properties);
        std::fflush(stdout);
    });
}

Cost MeasureShell(const std::string& line) {
    return Measure([&] { ::execl("/bin/sh", "sh", "-c", line.c_str(), nullptr); });
}

Cost MeasureTool(const Captures& captures, const std::string& command) {
    const std::string tool = fs::read_symlink("/proc/self/exe").parent_path() / "stmdcm";
    return MeasureShell("exec " + tool + " " + command + " --files-from - <" + captures.List());
}

/// Of figures that are gathered, one an iteration.
double Median(std::vector<double> figures) {
    std::sort(figures.begin(), figures.end());
    return figures[figures.size() / 2];
}

void BM_Many(benchmark::State& state, const char* command) {
    const Captures few(kCaptures / 10), many(kCaptures);
    MeasureLoop(many);  // what the disk holds is in memory then
    std::map<std::string, std::vector<double>> figures;
    for ([[maybe_unused]] auto _ : state) {
        const Cost loop = MeasureLoop(many);
        const Cost tool = MeasureTool(many, command);
        const Cost two = MeasureTool(many, std::string(command) + " -j 2");
        const double memory = MeasureTool(few, command).memory;
        state.SetIterationTime(tool.wall);
        figures["cpu_of_loop"].push_back(tool.cpu / loop.cpu);
        figures["first_ms"].push_back(1000 * tool.first);
        figures["MiB"].push_back(tool.memory);
        figures["MiB_over_tenth"].push_back(tool.memory - memory);
        figures["speed_of_2"].push_back(tool.wall / two.wall);
    }
    for (const auto& [name, values] : figures) {
        state.counters[name] = Median(values);
    }
}

/// Of a command.
void Register(const char* command) {
    const std::string name = std::string("10,000 captures/") + command;
    benchmark::RegisterBenchmark(name.c_str(), BM_Many, command)
        ->UseManualTime()
        ->Iterations(5)
        ->Unit(benchmark::kMillisecond);
    const stmdcm_bench::Limited limits(
        name, {{"cpu_of_loop", 0, 1.3}, {"first_ms", 0, 100}, {"MiB_over_tenth", -1, 1}, {"speed_of_2", 1.7, 2}});
}

const int kRegistered = [] {
    for (const char* command : {"check", "show --json", "show --get STM_ATB_Id"}) {
        Register(command);
    }
    return 0;
}();

#ifdef STMDCM_BENCH_PYTHON
/// The same loop in Python: all of its process, and without the start of the interpreter and the import.
void BM_Python(benchmark::State& state) {
    const std::string python =
        "PYTHONPATH=" STMDCM_BENCH_MODULE " exec " STMDCM_BENCH_PYTHON " -c \"import stmdcm, sys\n";
    const std::string loop =
        "print(sum(len(stmdcm.read(path).properties) for path in sys.stdin.read().splitlines()))\" <";
    const Captures many(kCaptures), none(0);
    MeasureLoop(many);
    std::vector<double> ratios;
    for ([[maybe_unused]] auto _ : state) {
        const Cost bare = MeasureLoop(many);
        const Cost all = MeasureShell(python + loop + many.List());
        const Cost start = MeasureShell(python + loop + none.List());
        state.SetIterationTime(all.wall);
        ratios.push_back(all.cpu / bare.cpu);
        state.counters["cpu_of_loop_without_start"] = (all.cpu - start.cpu) / bare.cpu;
        state.counters["MiB"] = all.memory;
    }
    state.counters["cpu_of_loop"] = Median(ratios);
}

BENCHMARK(BM_Python)->Name("10,000 captures/Python")->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
const stmdcm_bench::Limited kOfPython("10,000 captures/Python", {{"cpu_of_loop", 0, 1.3}});
#endif

}  // namespace
