#include "tool/output/GuardedHome.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "tests/tool/ToolRun.h"

namespace stmdcm {

namespace fs = std::filesystem;

namespace {

/// Makes a home, tells its path, and waits for a signal.
[[noreturn]] void Child(int descriptor) {
    const GuardedHome home;
    const std::string path = home.Path().string();
    const bool isTold = ::write(descriptor, path.data(), path.size()) > 0;
    ::close(descriptor);
    while (isTold) {
        ::pause();
    }
    ::_exit(1);
}

/// Runs the tool, sends it the signal after a while, 0 for none, and gives the status that a shell shows.
int Interrupted(std::vector<std::string> words, const fs::path& temporary, int number,
                std::chrono::microseconds delay) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::setenv("TMPDIR", temporary.c_str(), 1);
        words.insert(words.begin(), STMDCM_TOOL);
        std::vector<char*> pointers;
        std::transform(words.begin(), words.end(), std::back_inserter(pointers),
                       [](std::string& word) { return word.data(); });
        pointers.push_back(nullptr);
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(null, STDERR_FILENO);
        ::execv(STMDCM_TOOL, pointers.data());
        ::_exit(127);
    }
    std::this_thread::sleep_for(delay);
    if (number != 0) {
        ::kill(child, number);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

using InterruptTest = ToolRun;

}  // namespace

TEST(GuardedHomeTest, AnInterruptedProgramLeavesNothingBehind) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe(ends.data()), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            Child(ends[1]);
        }
        ::close(ends[1]);
        std::array<char, 4096> path{};
        ASSERT_GT(::read(ends[0], path.data(), path.size() - 1), 0);
        ::close(ends[0]);
        EXPECT_TRUE(std::filesystem::is_directory(path.data()));

        ::kill(child, number);
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == number) << status;
        EXPECT_FALSE(std::filesystem::exists(path.data()));
    }
}

TEST_F(InterruptTest, LeavesOldOrNewAndNothingElse) {
    constexpr int kRuns = 20;
    const std::string settings = (Home() / "settings.txt").string();
    const std::string capture = (Home() / "capture.tdf").string();
    const std::vector<std::string> commands[] = {
        {"demo"},
        {"set", settings, "STM_ATB_Id=42"},
        {"recover", STMDCM_TEST_DATA "/full.tdf", "--force", "-o", capture},
    };
    /// Gives the status and what the two files hold then.
    const auto run = [&](const std::vector<std::string>& command, int number, std::chrono::microseconds delay) {
        fs::copy_file(STMDCM_TEST_DATA "/settings.txt", settings, fs::copy_options::overwrite_existing);
        fs::copy_file(STMDCM_TEST_DATA "/torn-payload.tdf", capture, fs::copy_options::overwrite_existing);
        const int status = Interrupted(command, Temporary(), number, delay);
        EXPECT_EQ(std::distance(fs::directory_iterator(Home()), {}), 2);
        EXPECT_TRUE(fs::is_empty(Temporary()));
        return std::pair(status, stmdcm_test::ReadWhole(settings) + stmdcm_test::ReadWhole(capture));
    };
    const std::string old = run({"--version"}, 0, {}).second;
    std::mt19937 random(1);  // the same delays each time
    for (const std::vector<std::string>& command : commands) {
        const auto begin = std::chrono::steady_clock::now();
        const auto [status, changed] = run(command, 0, {});
        const auto end = std::chrono::steady_clock::now();
        ASSERT_EQ(status, 0) << command[0];
        std::uniform_int_distribution<long> delays(
            0, std::chrono::duration_cast<std::chrono::microseconds>(end - begin).count());
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
            for (int i = 0; i < kRuns; ++i) {
                const std::chrono::microseconds delay(delays(random));
                SCOPED_TRACE(testing::Message()
                             << command[0] << ", " << ::strsignal(number) << " after " << delay.count());
                const auto [ended, content] = run(command, number, delay);
                EXPECT_TRUE(ended == 128 + number || (ended == 0 && content == changed)) << ended;
                EXPECT_TRUE(content == old || content == changed);
            }
        }
    }
}

}  // namespace stmdcm
