// Whole commands on one small capture, from the start of the process to its end.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "bench/Ratios.h"
#include "bench/ScratchCapture.h"

namespace {

using namespace stmdcm_bench;

/// Gives its status; what it prints is thrown away.
int Run(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = -1;
    if (posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0) {
        ::waitpid(child, &status, 0);
    }
    posix_spawn_file_actions_destroy(&actions);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Runs the words with a capture behind them, which is as new each time.
void RunOn(benchmark::State& state, const std::vector<std::string>& words, bool changes) {
    ScratchFile capture(".tdf");
    const auto fill = [&] {
        capture.Truncate(0);
        FillCapture(capture, {4, 4096});
        AppendConfiguration(capture);
    };
    std::vector<std::string> line = words;
    line.insert(line.begin() + 2, capture.Path());
    fill();
    for (auto _ : state) {
        if (Run(line) != 0) {
            state.SkipWithError("the command failed");
            break;
        }
        if (changes) {
            state.PauseTiming();
            fill();
            state.ResumeTiming();
        }
    }
}

Family CommandFamily(const std::string& command, const std::vector<std::string>& rest = {}) {
    const auto with = [&](const char* program) {
        std::vector<std::string> words = {program, command};
        words.insert(words.end(), rest.begin(), rest.end());
        return [words, changes = !rest.empty()](benchmark::State& state) { RunOn(state, words, changes); };
    };
    return {
        "stmdcm " + command, {{kOurs, with(STMDCM_TOOL)}, {"a bare host", with(STMDCM_BARE_HOST)}}, {{kBestPeer, 2.0}}};
}

const Family kShow = CommandFamily("show");
const Family kCheck = CommandFamily("check");
const Family kSet = CommandFamily("set", {"STM_DTC_target_pins=2"});

}  // namespace
