#include "tool/output/GuardedHome.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
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

#include "source_utilities/PosixFile.h"
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

TEST_F(InterruptTest, TheNextCommandRemovesWhatAKilledOneHasLeft) {
    const pid_t child = stmdcm_test::StartChild([] { return 0; });
    const std::string gone = std::to_string(child);
    siginfo_t ended{};
    ::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);  // so its number is not free
    const std::string mine = Home() / "mine", sample = Sample("full.tdf");
    fs::create_directory(mine);
    fs::copy_file(sample, mine + "/file");
    const auto name = [](const fs::path& folder, const std::string& process) {
        return (folder / (".stmdcm-" + process + ".tmp")).string();
    };
    std::vector<std::string> stay;
    for (const fs::path& folder : {Home(), Temporary()}) {
        fs::copy_file(sample, name(folder, gone + "-1"));
        fs::copy_file(sample, stay.emplace_back(name(folder, std::to_string(::getpid()) + "-2")));
        fs::copy_file(sample, stay.emplace_back(name(folder, gone + "x-3")));
        fs::copy_file(sample, stay.emplace_back(name(folder, gone + "-4 of another, locked")));
        fs::create_symlink(mine, stay.emplace_back(name(folder, gone + "-5")));
        fs::copy(mine, name(folder, gone + "-6"));
    }
    stay.push_back(name(Home(), gone + "-6"));  // no folders where outputs are
    const auto locked = ZU_WEP::PosixFile::Open(stay[2].c_str(), O_RDONLY),
               other = ZU_WEP::PosixFile::Open(stay[6].c_str(), O_RDONLY);
    ASSERT_EQ(::flock(locked.Descriptor(), LOCK_EX) + ::flock(other.Descriptor(), LOCK_EX), 0);
    if (::geteuid() == 0) {
        fs::copy_file(sample, stay.emplace_back(name(Temporary(), gone + "-7")));
        ::chown(stay.back().c_str(), 65534, 65534);
    }
    EXPECT_EQ(Run("recover " + sample + " -o " + (Home() / "new.tdf").string()).status, 0);
    std::vector<std::string> left;
    for (const fs::path& folder : {Home(), Temporary()}) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ".tmp") {
                left.push_back(entry.path());
            }
        }
    }
    EXPECT_THAT(left, testing::UnorderedElementsAreArray(stay));
    EXPECT_TRUE(fs::exists(mine + "/file"));
    stmdcm_test::WaitForChild(child);
}

}  // namespace stmdcm
