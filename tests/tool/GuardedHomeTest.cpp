#include "tool/output/GuardedHome.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>

namespace stmdcm {

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

}  // namespace

TEST(GuardedHomeTest, AnInterruptedProgramLeavesNothingBehind) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
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

}  // namespace stmdcm
