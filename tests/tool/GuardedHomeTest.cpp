#include "tool/output/GuardedHome.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/KillAtSyscall.h"
#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {

namespace fs = std::filesystem;
using std::chrono::microseconds;

namespace {

/// Interrupts a child with the signal, none for 0, after what is `before`. Gives the status that a shell shows.
int Interrupted(pid_t child, int number, const std::function<void()>& before) {
    before();
    if (number != 0) {
        ::kill(child, number);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};
using InterruptTest = ConfigurationRun;

}  // namespace

TEST_F(InterruptTest, AnInterruptedProgramLeavesNothingBehind) {
    for (const int number : kSignals) {
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        const pid_t child = stmdcm_test::StartChild([&] {
            ::signal(number, SIG_DFL);  // a shell's background job ignores some
            const GuardedHome home;
            const std::string path = home.Path();
            ::close(ends[0]);
            return ::write(ends[1], path.c_str(), path.size() + 1) > 0 ? ::pause() : 1;
        });
        char path[4096] = "";
        const auto isMade = [&] { EXPECT_TRUE(::read(ends[0], path, sizeof path) > 0 && fs::is_directory(path)); };
        EXPECT_EQ(Interrupted(child, number, isMade), 128 + number);
        EXPECT_FALSE(fs::exists(path));
        ::close(ends[0]);
        ::close(ends[1]);
    }
}

TEST_F(InterruptTest, LeavesOldOrNewAndNothingElse) {
    constexpr int kRuns = 20;
    const std::string settings = Home() / "settings.txt";
    const std::string capture = Home() / "capture.tdf";
    /// Gives the status and what the two files hold then.
    const auto run = [&](const std::string& command, int number, microseconds delay) {
        stmdcm_test::WriteWhole(settings, Content(Sample("settings.txt")));
        stmdcm_test::WriteWhole(capture, Content(Sample("torn-payload.tdf")));
        const std::string line =
            "TMPDIR=" + Temporary().string() + " exec " STMDCM_TOOL " " + command + " >/dev/null 2>&1";
        const pid_t child =
            stmdcm_test::StartChild([&] { return ::execl("/bin/sh", "sh", "-c", line.c_str(), nullptr); });
        const int status = Interrupted(child, number, [&] { std::this_thread::sleep_for(delay); });
        EXPECT_EQ(std::distance(fs::directory_iterator(Home()), {}), 2);
        EXPECT_TRUE(fs::is_empty(Temporary()));
        return std::pair(status, Content(settings) + Content(capture));
    };
    const std::string old = run("--version", 0, {}).second;
    std::mt19937 random(1);  // the same delays each time
    for (const std::string& command : {std::string("demo"), "set " + settings + " STM_ATB_Id=42",
                                       "recover " + Sample("full.tdf") + " --force -o " + capture}) {
        const auto begin = std::chrono::steady_clock::now();
        const auto [status, changed] = run(command, 0, {});
        const auto longest = std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now() - begin).count();
        ASSERT_EQ(status, 0) << command;
        for (int i = 0; i < 4 * kRuns; ++i) {
            const int number = kSignals[i % 4];
            const microseconds delay(std::uniform_int_distribution<long>(0, longest)(random));
            SCOPED_TRACE(testing::Message() << command << ", " << ::strsignal(number) << " after " << delay.count());
            const auto [ended, content] = run(command, number, delay);
            EXPECT_TRUE(ended == 128 + number || (ended == 0 && content == changed)) << ended;
            EXPECT_TRUE(content == old || content == changed);
        }
    }
}

}  // namespace stmdcm
