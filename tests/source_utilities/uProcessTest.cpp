#include "source_utilities/uProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <future>

#include "source_utilities/uMutex.h"

namespace ZU_WEP {
namespace {

TEST(uProcess, FindsStartsAndEndsProcesses) {
    EXPECT_EQ(uProcess::LookupProcess(uProcess::GetPid()), static_cast<unsigned long>(getpid()));
    EXPECT_EQ(uProcess::LookupProcess(0UL), 0U);
    EXPECT_EQ(uProcess::LookupProcess(nullptr, 0), 0U);
    EXPECT_NE(uProcess::LookupProcess(std::filesystem::read_symlink("/proc/self/exe").c_str(), 0), 0U);
    EXPECT_EQ(uProcess::LookupProcess("/no such program", 0), 0U);

    const unsigned long child = uProcess::InvokeProcess("sleep", "60", false);
    ASSERT_NE(child, 0U);
    EXPECT_EQ(uProcess::LookupProcess(child), child);
    EXPECT_TRUE(uProcess::TerminateProcess(child));
    EXPECT_EQ(uProcess::LookupProcess(child), 0U);
    // The last two would reach other processes if they were cut to a signed 32-bit id.
    for (const unsigned long pid : {child, 0UL, 0xFFFFFFFFUL, ~0UL}) EXPECT_FALSE(uProcess::TerminateProcess(pid));
}

TEST(uProcess, ChildOfAMissingProgramReturnsZero) {
    EXPECT_EQ(uProcess::InvokeProcess(nullptr, nullptr, false), 0U);
    const pid_t parent = getpid();
    const unsigned long child = uProcess::InvokeProcess("/no such program", nullptr, false);
    if (getpid() != parent) _exit(child == 0 ? 42 : 1);
    int status = 0;
    ASSERT_EQ(waitpid(static_cast<pid_t>(child), &status, 0), static_cast<pid_t>(child));
    EXPECT_EQ(WEXITSTATUS(status), 42);
}

TEST(uMutex, BelongsToItsThreadUntilUnlockedAsOften) {
    uMutex mutex;
    EXPECT_FALSE(mutex.Unlock());
    EXPECT_TRUE(mutex.Lock() && mutex.Lock());
    EXPECT_EQ(mutex.GetOwnerThreadHandle(), pthread_self());
    EXPECT_FALSE(std::async(std::launch::async, [&] { return mutex.Unlock(); }).get());
    std::future<bool> other = std::async(std::launch::async, [&] { return mutex.Lock() && mutex.Unlock(); });
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_TRUE(mutex.IsLocked());
    EXPECT_EQ(other.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_TRUE(other.get());
    EXPECT_FALSE(mutex.IsLocked());
    EXPECT_EQ(mutex.GetOwnerThreadHandle(), 0U);
}

}  // namespace
}  // namespace ZU_WEP
