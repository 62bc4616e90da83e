#include <sys/resource.h>

#include <regex>
#include <thread>
#include <tuple>

#include "source_utilities/Log.h"
#include "source_utilities/source_utilities_error.h"
#include "source_utilities/uLogSystem.h"
#include "tests/source_utilities/TempHome.h"
#include "tests/support/KillAtSyscall.h"

namespace ZU_WEP {
namespace {

using stmdcm_test::ReadWhole;

class uLog : public TempHome {
  protected:
    ~uLog() override { Reset(); }

    static void Reset() {
        delete uLogSystem::m_pSystem;
        uLogSystem::m_pSystem = nullptr;
    }
    static uLogSystem& Start(const char* level) {
        Reset();
        setenv("LEVEL", level, 1);
        EXPECT_TRUE(uLogSystem::GetLogSystem()->InitLog("log.txt", "LEVEL", nullptr, false));
        return *uLogSystem::m_pSystem;
    }
};

TEST_F(uLog, LevelVariableSelectsDestinations) {
    const std::tuple<const char*, bool, bool, int> cases[] = {
        {"1", true, false, 1}, {"2", true, true, 1},   {"3", true, false, 2},  {"4", true, true, 2},
        {"5", true, true, 2},  {"6", true, true, 3},   {"9", false, false, 9}, {"-1", false, false, -1},
        {"", false, false, 0}, {"0", false, false, 0}, {"on", false, false, 0}};
    for (const auto& [variable, output, echo, stored] : cases) {
        SCOPED_TRACE(variable);
        std::filesystem::remove("log.txt");
        testing::internal::CaptureStdout();
        EXPECT_EQ(Start(variable).GetLoggingLevel(), stored);
        Log(LogError, "message");
        const std::string lines = ReadWhole("log.txt");
        EXPECT_EQ(lines.find("directory is " + m_home.string() + "/.ZU-trace/settings\n") != lines.npos, output);
        EXPECT_EQ(lines.find("message") != lines.npos, output);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), echo ? lines : "");
        EXPECT_EQ(std::filesystem::exists("log.txt"), output);
        EXPECT_TRUE(std::filesystem::remove(".ZU-trace/settings"));
    }
}

TEST_F(uLog, LinesHaveOneFormatAndOneLineEnd) {
    const std::tuple<unsigned, uLogger::TIME_DATE, const char*, const char*> cases[] = {
        {1, uLogger::TIME_STAMP, "text", "M     \\d\\d:\\d\\d:\\d\\d:\\d{3} \\| text\n"},
        {16, uLogger::NO_STAMP, "text\n", "    E  text\n"},
        {31, uLogger::NO_STAMP, "text\r\n", "MWFAE  text\n"},
        {2, uLogger::DATE_STAMP, "text\n\r", " W    \\d\\d/\\d\\d/\\d\\d \\| text\n"},
        {12, uLogger::DATE_TIME_STAMP, "text\n\n",
         "  FA  \\d\\d/\\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d:\\d{3} \\| text\n\n"},
        {32, uLogger::NO_STAMP, "", "       \n"},
        {0, uLogger::NO_STAMP, "text", ""}};
    uLogger logger("line.txt", false);
    for (const auto& [level, when, message, line] : cases) {
        logger.Clear();
        logger.Log(level, when, "%s", message);
        EXPECT_TRUE(std::regex_match(ReadWhole("line.txt"), std::regex(line))) << ReadWhole("line.txt") << line;
    }
    for (const std::size_t size : {4087U, 4088U, 4089U, 10000U}) {
        logger.Clear();
        logger.Log("%s", (std::string(size, 'x') + "\n").c_str());
        const std::string line = "M      " + std::string(std::min<std::size_t>(size, 4087), 'x') + "\n";
        EXPECT_EQ(ReadWhole("line.txt"), line) << size;
    }
}

/// As a host passes its own arguments on: `list` is an array here and a pointer in the lambda.
__attribute__((format(printf, 2, 3))) void PassOn(uLogger& logger, const char* format, ...) {
    std::va_list list;
    va_start(list, format);
    logger.Log(16, uLogger::NO_STAMP, format, list);
    va_end(list);
    va_start(list, format);
    [&logger, format](std::va_list pointer) { logger.Log(format, pointer); }(list);
    va_end(list);
}

TEST_F(uLog, ANullArgumentIsNoArgumentList) {
    uLogger logger("line.txt", false);
    logger.Log(1, uLogger::TIME_DATE(0), "%d", 0);
    logger.Log("%d", 0);
    logger.Log("%ld", 0L);
    PassOn(logger, "%d %s", 0, "passed on");
    EXPECT_EQ(ReadWhole("line.txt"), "M      0\nM      0\nM      0\n    E  0 passed on\nM      0 passed on\n");
}

TEST_F(uLog, NeedsNoLogger) {
    Reset();
    Log(LogError, "nobody listens");
    uLogSystem::GetLogSystem()->SetLoggingLevel(3);
    EXPECT_EQ(LoggerAbove(0), nullptr);
    EXPECT_FALSE(uLogSystem::m_pSystem->InitLog(nullptr, "LEVEL", nullptr, true));
    // A file that can't be opened costs its lines and nothing else.
    EXPECT_TRUE(uLogSystem::m_pSystem->InitLogEx("log.txt", 1, "missing"));
    Log(LogError, "nowhere to go");
    EXPECT_EQ(LoggerAbove(0)->GetName(), std::string("missing/log.txt"));
}

TEST_F(uLog, AFileSizeLimitOrAClosedPipeEndsNoHost) {
    const auto limitFileSize = [](rlim_t size) {
        const rlimit limit{size, RLIM_INFINITY};
        return ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
    };
    for (const bool pendingBefore : {false, true}) {
        std::filesystem::remove("line.txt");
        const int changed = stmdcm_test::RunInChild([&] {
            sigset_t signals{}, mask{}, pending{};
            for (const int signal : {SIGXFSZ, SIGPIPE}) {
                sigaddset(&signals, signal);
                std::signal(signal, SIG_DFL);
                if (pendingBefore) {
                    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
                    ::raise(signal);
                }
            }
            int ends[2];
            const bool isClosed = ::pipe(ends) == 0 && ::dup2(ends[1], STDOUT_FILENO) == STDOUT_FILENO &&
                                  ::close(ends[0]) == 0 && limitFileSize(20);
            uLogger logger("line.txt", true);
            logger.EnableLogToStdio(true);
            for (const char* text : {"kept\n", "at the limit", "past the limit"}) logger.Log("%s", text);
            logger.EnableOutput(false);  // closes the file, with nothing left to write
            logger.EnableOutput(true);
            limitFileSize(RLIM_INFINITY);
            logger.Log("whole again");
            pthread_sigmask(SIG_BLOCK, nullptr, &mask);
            ::sigpending(&pending);
            int differences = isClosed ? 0 : 1;
            for (const int signal : {SIGXFSZ, SIGPIPE}) {
                differences += (sigismember(&mask, signal) != int{pendingBefore}) +
                               (sigismember(&pending, signal) != int{pendingBefore}) +
                               (std::signal(signal, SIG_DFL) != SIG_DFL);
            }
            return differences;
        });
        EXPECT_EQ(changed, 0);
        EXPECT_TRUE(std::regex_match(ReadWhole("line.txt"), std::regex("M      kept\nM      a?.*M      whole again\n")))
            << ReadWhole("line.txt");
    }
}

TEST_F(uLog, FirstFileStays) {
    uLogSystem& system = Start("1");
    EXPECT_TRUE(system.InitLog("other.txt", "LEVEL", nullptr, false));
    EXPECT_TRUE(system.InitLogEx("other.txt", 3, ""));
    LogAbove(1, LogInformation, "too fine");
    system.SetLoggingLevel(6);
    LogAbove(1, LogInformation, "fine");
    system.SetLoggingLevel(0);
    EXPECT_EQ(system.GetLoggingLevel(), 3);
    Log(LogInformation, "switched off");
    EXPECT_TRUE(std::regex_search(ReadWhole("log.txt"), std::regex("data\nM     .* \\| fine\n$")));
}

TEST_F(uLog, NamedLoggersLiveInTheDirectoryOfTheVariable) {
    Reset();
    setenv("LEVEL", "1", 1);
    setenv("DIR", m_home.c_str(), 1);
    uLogSystem& system = *uLogSystem::GetLogSystem();
    for (const char* name : {"a.txt", "b.txt", "a.txt"}) EXPECT_TRUE(system.InitLog(name, "LEVEL", "DIR", true));
    const std::unique_ptr<uLogger> first(system.LookupLogger("a.txt")), second(system.LookupLogger("b.txt"));
    EXPECT_EQ(system.GetLogger(), first.get());
    EXPECT_EQ(second->GetName(), m_home.string() + "/b.txt");
    Reset();  // One of the two initialisations is left: both loggers live on.
    second->LogTimeStamp();
}

TEST_F(uLog, MissingHomeLeavesTheLoggerInForce) {
    unsetenv("HOME");
    EXPECT_THROW(Start("1"), source_utilities_error);
    EXPECT_TRUE(uLogSystem::m_pSystem->InitLog("log.txt", "LEVEL", nullptr, false));
    uLogger::LogModuleInfo();
    EXPECT_EQ(ReadWhole("log.txt"), "M      MODULE INFO - source_utilities_test\n");
}

}  // namespace
}  // namespace ZU_WEP
