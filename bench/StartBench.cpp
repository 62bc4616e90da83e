// The first manager of a process, and the second, against an empty library and the system calls that the interface
// asks for. Each is timed in a process of its own, which starts without our library.

#include <benchmark/benchmark.h>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "bench/Ratios.h"
#include "host/CDeviceIdentifier.h"
#include "host/CPUInfo.h"

namespace {

using namespace stmdcm_bench;
using namespace Zu::Wep::Trace;
using Clock = std::chrono::steady_clock;

/// Runs `work` in children; each gives the time that counts, in seconds.
template <class Work>
void InChildren(benchmark::State& state, Work work) {
    for (auto _ : state) {
        int pipes[2];
        if (::pipe(pipes) != 0) std::abort();
        const pid_t child = ::fork();
        if (child == 0) {
            ::setenv("HOME", "/tmp/stmdcm-bench-home", 1);
            const double seconds = work();
            ::_exit(::write(pipes[1], &seconds, sizeof seconds) == sizeof seconds ? 0 : 1);
        }
        double seconds = 0;
        if (::read(pipes[0], &seconds, sizeof seconds) != sizeof seconds) {
            state.SkipWithError("the child failed");
        }
        ::waitpid(child, nullptr, 0);
        ::close(pipes[0]);
        ::close(pipes[1]);
        state.SetIterationTime(seconds);
    }
}

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

using Create = void* (*)(CPUInfo*, CDeviceIdentifier*);

void CreateManager(void* library) {
    static CPUInfo cpu{"bench", 0, 0, 0};
    const auto create = reinterpret_cast<Create>(::dlsym(library, "CreateDeviceConfigManager"));
    if (create == nullptr || create(&cpu, nullptr) == nullptr) {
        std::abort();
    }
}

double FirstManager() {
    const auto start = Clock::now();
    CreateManager(::dlopen(STMDCM_LIBRARY, RTLD_NOW | RTLD_LOCAL));
    return SecondsSince(start);
}

double SecondManager() {
    void* const library = ::dlopen(STMDCM_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    CreateManager(library);
    const auto start = Clock::now();
    CreateManager(library);
    return SecondsSince(start);
}

void LookForProcess(const char* wanted) {
    DIR* const processes = ::opendir("/proc/");
    for (const dirent* each = ::readdir(processes); each != nullptr && std::strcmp(each->d_name, wanted) != 0;) {
        each = ::readdir(processes);
    }
    ::closedir(processes);
}

/// The directories (docs/log.md) are there, as they are but once in a user's life.
void AskForDirectories() {
    for (const char* directory : {"/tmp/stmdcm-bench-home/.ZU-trace", "/tmp/stmdcm-bench-home/.ZU-trace/data",
                                  "/tmp/stmdcm-bench-home/.ZU-trace/settings"}) {
        ::mkdir(directory, 0777);
    }
    for (const char* variable : {"A_LOGGING_DIR", "A_DATA_DIR", "A_SETTINGS_DIR"}) {
        ::setenv(variable, "/tmp/stmdcm-bench-home/.ZU-trace", 1);
    }
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::tzset();
    ::localtime_r(&now, &local);
}

void AskForSettings() {
    const int settings = ::open("/tmp/stmdcm-bench-home/.ZU-trace/settings/bench-STMCfg.txt", O_RDONLY | O_CLOEXEC);
    if (settings >= 0) ::close(settings);
}

/// Both halves of a manager set themselves up, each once; the second finds the process that the first has named.
double FirstBare() {
    const auto start = Clock::now();
    if (::dlopen(STMDCM_EMPTY, RTLD_NOW | RTLD_LOCAL) == nullptr) {
        std::abort();
    }
    const std::string self = std::to_string(::getpid());
    ::setenv("A_DEBUGCLIENT_PID", self.c_str(), 1);
    AskForDirectories();
    LookForProcess(self.c_str());
    AskForDirectories();
    AskForSettings();
    return SecondsSince(start);
}

double SecondBare() {
    const auto start = Clock::now();
    AskForSettings();
    return SecondsSince(start);
}

Family StartFamily(const std::string& what, double (*ours)(), double (*bare)()) {
    return {what,
            {{kOurs, [=](benchmark::State& state) { InChildren(state, ours); }},
             {"the bare calls", [=](benchmark::State& state) { InChildren(state, bare); }}},
            {{kBestPeer, 1.5}},
            Timing::Manual};
}

const Family kFirst = StartFamily("first manager of a process", FirstManager, FirstBare);
const Family kSecond = StartFamily("second manager", SecondManager, SecondBare);

}  // namespace
