#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <future>
#include <thread>
#include <tuple>

#include "source_utilities/PosixFile.h"
#include "source_utilities/source_utilities_error.h"
#include "source_utilities/uDll.h"
#include "source_utilities/uEnvironment.h"
#include "source_utilities/uFile.h"
#include "source_utilities/uLogSystem.h"
#include "source_utilities/uLogger.h"
#include "source_utilities/uMutex.h"
#include "source_utilities/uProcess.h"
#include "source_utilities/uString.h"
#include "source_utilities/uTime.h"
#include "tests/source_utilities/TempHome.h"
#include "tests/support/KillAtSyscall.h"

namespace ZU_WEP {
namespace {

using uFileTest = TempHome;

TEST_F(uFileTest, WritesSeeksAndReads) {
    uFile file("f", "w+");
    char line[32] = {};
    EXPECT_FALSE(file.IsOpen() || file.Flush() || file.WriteString("lost") || file.Close() || file.Erase());
    EXPECT_TRUE(file.IsError());
    ASSERT_TRUE(file.Open());
    EXPECT_EQ(file.Write("one\n", 4), 4U);
    EXPECT_EQ(file.Printf("%d\n", 22), 3);
    std::fpos_t end{};
    EXPECT_TRUE(file.GetPosition(&end) && file.SeekToBegin());
    EXPECT_EQ(file.GetSize(), 7U);
    EXPECT_TRUE(file.ReadString(line, sizeof line) && line == std::string_view("one\n"));
    EXPECT_EQ(file.GetSize(), 3U);
    EXPECT_EQ(file.Read(line, sizeof line), 3U);
    EXPECT_TRUE(file.IsEof() && !file.IsError());
    EXPECT_TRUE(file.SetPosition(&end) && file.WriteString("three") && file.SeekToEnd());
    EXPECT_TRUE(file.Flush());
    EXPECT_EQ(stmdcm_test::ReadWhole("f"), "one\n22\nthree");
    EXPECT_TRUE(file.Erase() && file.IsOpen() && file.WriteString("new") && file.Close());
    EXPECT_EQ(stmdcm_test::ReadWhole("f"), "new");
    EXPECT_FALSE(file.Open(nullptr, "r") || file.IsOpen() || file.Open());
}

TEST_F(uFileTest, IsNotInheritedAndKeepsTheMode) {
    EXPECT_EQ(fcntl(PosixFile::Open("/dev/null", O_RDONLY).Descriptor(), F_GETFD), FD_CLOEXEC);
    for (const char* mode : {"a+", "w", "wb,ccs=UTF-8", "r+,ccs=UTF-8"}) {
        const auto work = [mode] {  // in a child, since the C library keeps what it converts characters with
            const int next = dup(STDIN_FILENO);
            close(next);
            uFile file;
            return file.Open("f", mode) && file.GetOpenMode() == mode && fcntl(next, F_GETFD) == FD_CLOEXEC ? 0 : 1;
        };
        EXPECT_EQ(stmdcm_test::RunInChild(work), 0) << mode;
    }
}

TEST_F(uFileTest, FailedCloseStaysOpenWithoutAStream) {
    uFile file;
    ASSERT_TRUE(file.Open("/dev/full", "w") && file.WriteString("x"));
    EXPECT_TRUE(file.Close() && file.IsOpen());
    EXPECT_FALSE(file.WriteString("x") || file.Close());
}

struct Clock : uTime {
    static void Set(int month, int milli, int status) {
        std::tie(m_year, m_day, m_hour, m_minute, m_second) = std::make_tuple(2026, 15, 12, 0, 5);
        std::tie(m_month, m_milli, m_status) = std::tie(month, milli, status);
    }
};

TEST(PosixFileTest, TakesNoStandardStreamForItsOwn) {
    const auto open = [] {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::close(stream);
        }
        return PosixFile::Open("/dev/null", O_RDONLY).Descriptor() > STDERR_FILENO ? 0 : 1;
    };
    EXPECT_EQ(stmdcm_test::RunInChild(open), 0);
}

TEST(uTime, FormatsWithItsOwnTokensInTheRoomThereIs) {
    const std::tuple<int, int, int, const char*, const char*> cases[] = {
        {2, 0, 0, "%H:%M:%S:%s", "12:00:05:000"}, {2, 45, 0, "%s %#s %s", "045 45 045"}, {2, 0, 0, "%m", "02"},
        {0, 0, 0, "%m/%d/%y | ", "00/15/26 | "},  {2, 0, 1, "%H", "Invalid time"},       {2, 0, 0, "", ""}};
    for (const auto& [month, milli, status, format, text] : cases) {
        Clock::Set(month, milli, status);
        char buffer[32];
        EXPECT_STREQ(uTime().FormatTime(buffer, sizeof buffer, format), text);
        for (int size = 1; size < 32; ++size) {
            std::string small(static_cast<std::size_t>(size) + 1, '#');
            ASSERT_NE(uTime().FormatTime(small.data(), size, format), nullptr);
            EXPECT_EQ(small.back(), '#') << size << format;
        }
    }
}

TEST(uTime, NoticesAnotherTimeZoneWithinASecond) {
    for (const auto& [zone, difference] : {std::pair("UTC-3", 3), std::pair("UTC+5", -5)}) {
        ::setenv("TZ", zone, 1);
        std::this_thread::sleep_for(std::chrono::seconds(1));
        uTime::GetLocal();
        const std::time_t now = std::time(nullptr) + difference * 3600;
        EXPECT_EQ(uTime::GetHour(), std::gmtime(&now)->tm_hour);
    }
    ::unsetenv("TZ");
}

TEST(uTime, TakesMillisecondsFromTheSeconds) {
    const std::time_t before = std::time(nullptr);
    uTime::GetLocal();
    const std::time_t after = std::time(nullptr);
    EXPECT_TRUE(uTime::GetMilliSecond() == before / 10000 % 1000 || uTime::GetMilliSecond() == after / 10000 % 1000);
    EXPECT_EQ(uTime::GetYear(), std::localtime(&after)->tm_year + 1900);
}

TEST(uProcess, FindsStartsAndEndsProcesses) {
    EXPECT_EQ(uProcess::LookupProcess(uProcess::GetPid()), static_cast<unsigned long>(getpid()));
    EXPECT_EQ(uProcess::LookupProcess(0UL), 0U);
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
    const pid_t parent = getpid();
    const auto child = static_cast<pid_t>(uProcess::InvokeProcess("/no such program", nullptr, false));
    if (getpid() != parent) _exit(child == 0 ? 42 : 1);
    EXPECT_EQ(stmdcm_test::WaitForChild(child), 42);
}

using SourceUtilities = TempHome;

TEST_F(SourceUtilities, ANullArgumentIsNothing) {
    std::string out = "kept";
    char buffer[8] = "kept";
    uFile file("f", nullptr);
    uLogSystem system;
    EXPECT_FALSE(file.Open() || uFile("", "r").Open() || uFile("f", "").Open());
    EXPECT_FALSE(system.InitLog(nullptr, "LEVEL", nullptr, false) || system.InitLog("f", nullptr, nullptr, false) ||
                 system.InitLogEx(nullptr, 1, nullptr) || system.LookupLogger(nullptr) != nullptr);
    EXPECT_EQ(uDll::GetPlatformName(out, nullptr), std::string("kept"));
    EXPECT_EQ(uDll::GetUniversalName(out, nullptr), std::string("kept"));
    EXPECT_THROW(uEnvironment::GetVar(nullptr), source_utilities_error);
    EXPECT_THROW(uEnvironment::SetVar(nullptr, ""), source_utilities_error);
    EXPECT_THROW(uEnvironment::SetVar("NAME", nullptr), source_utilities_error);
    EXPECT_EQ(uEnvironment::SetWorkingDirectory(nullptr), -1);
    EXPECT_EQ(uEnvironment::MakeDirectory(nullptr), -1);
    uEnvironment::ScopedDirectoryChanger(nullptr).Restore();
    EXPECT_EQ(uProcess::InvokeProcess(nullptr, nullptr, false), 0U);
    EXPECT_EQ(uProcess::LookupProcess(nullptr, 0), 0U);
    for (const auto& [to, size, format] : {std::tuple(buffer + 8, 0, "%d"), {nullptr, 8, "%d"}, {buffer, 8, nullptr}}) {
        EXPECT_EQ(uTime().FormatTime(to, size, format), nullptr);
    }
    EXPECT_EQ(buffer, std::string("kept"));
    EXPECT_EQ(uTime::ReplaceString(buffer, 8, "", "x"), 0);
    for (const int start : {-1, 5}) EXPECT_EQ(uTime::FindSubString(buffer, "", start), -1);
    EXPECT_FALSE(uDll::hasExtension(nullptr));
    std::vector<std::string> pieces;
    EXPECT_EQ(uString::Split(pieces, "", ""), 0U);
    EXPECT_EQ(uString::FromBool(false, out, false), std::string("false"));
    const char* const none = nullptr;
    uLogger logger("log.txt", true);
    logger.SetFileName(nullptr, true);
    logger.Clear();
    EXPECT_EQ(logger.GetName(), std::string());
    logger.SetFileName("log.txt", true);
    logger.Log(none);
    EXPECT_EQ(stmdcm_test::ReadWhole("log.txt"), "M      \n");
    EXPECT_TRUE(system.InitLogEx("log.txt", 0, nullptr));
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    EXPECT_TRUE(file.Open(("/proc/self/fd/" + std::to_string(ends[0])).c_str(), "r+"));
    EXPECT_EQ(file.GetSize(), 0U);  // of what has no places
    EXPECT_TRUE(file.Open("log.txt", nullptr) && file.Open("log.txt", ""));
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
