// What several threads may do at once, for the thread sanitizer and as such.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <regex>
#include <sstream>
#include <thread>

#include "source_utilities/uFile.h"
#include "source_utilities/uLogSystem.h"
#include "tests/source_utilities/TempHome.h"
#include "tests/support/AppendSection.h"
#include "trace/dcm/DeviceConfigManager.h"
#include "trace/dcm/StmDeviceConfigManager.h"
#include "trace/tdf/TDFHandler.h"

/// The C library locks what it keeps of the time zone where the sanitizer does not see it.
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() { return "race:tzset_internal\n"; }

namespace stmdcm_test {
namespace {

using namespace ZU_WEP;
using namespace Zu::Wep::Trace;

constexpr int kThreads = 4;
constexpr int kTimes = 200;

/// Each of the threads does it so many times: `work(thread)`.
template <class Work>
void InThreads(Work work, int times = kTimes) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([=] {
            for (int n = 0; n < times; ++n) work(i);
        });
    }
    for (std::thread& thread : threads) thread.join();
}

int CountLines(const std::string& text, const char* whole) {
    const std::regex pattern(whole);
    std::istringstream in(text);
    int count = 0;
    for (std::string line; std::getline(in, line);) count += std::regex_match(line, pattern);
    return count;
}

std::string LineOf(int thread) { return std::string(100, static_cast<char>('a' + thread)); }

class Threads : public TempHome {
  protected:
    ~Threads() override { uLogSystem::End(); }

    static void StartLog() {
        setenv("LEVEL", "1", 1);
        uLogSystem::GetLogSystem()->InitLog("log.txt", "LEVEL", nullptr, false);
        uLogSystem::GetLogSystem()->GetLogger()->Clear();
    }
};

TEST_F(Threads, HoldAMutexOneAtATime) {
    uMutex mutex;
    int count = 0;
    InThreads([&](int) {
        const uMutex::Guard outer(mutex), inner(mutex);
        ++count;
    });
    EXPECT_EQ(count, kThreads * kTimes);
}

TEST_F(Threads, ShareALogger) {
    StartLog();
    std::atomic<bool> isDone = false;
    std::thread other([&] {
        uLogger& logger = *uLogSystem::GetLogSystem()->GetLogger();
        while (!isDone) {
            logger.SetFileName("log.txt", true);
            logger.EnableOutput(true);
            logger.EnableLogToStdio(false);
            logger.Flush();
        }
    });
    std::thread host([&] {  // as one may before it forks
        while (!isDone) std::fflush(nullptr);
    });
    InThreads([](int thread) { Log(LogInformation, "%s", LineOf(thread).c_str()); });
    isDone = true;
    other.join();
    host.join();
    EXPECT_EQ(CountLines(stmdcm_test::ReadWhole("log.txt"), "M     [0-9:]{12} \\| (.)\\1{99}"), kThreads * kTimes);
}

TEST_F(Threads, ShareAFile) {
    uFile file;
    ASSERT_TRUE(file.Open("file.txt", "a+"));
    InThreads([&](int thread) {
        file.WriteString((LineOf(thread) + "\n").c_str());
        file.GetSize();
        if (thread == 0) {
            file.Close();
            file.Open();
        }
        while (!file.IsOpen()) {
        }
    });
    file.Close();
    EXPECT_GE(CountLines(stmdcm_test::ReadWhole("file.txt"), "(.)\\1{99}"), kTimes);
}

TEST_F(Threads, SaveAndReadCaptures) {
    const std::string shared = ReadWhole(STMDCM_TEST_DATA "/full.tdf");
    WriteWhole("shared.tdf", shared);
    InThreads(
        [&](int thread) {
            const std::string own = std::to_string(thread) + ".tdf";
            TDFHandler handler;
            unsigned section = 0, end = 0;
            handler.CreateTDFFile(own.c_str());
            handler.SaveSectionHeader(own.c_str(), "SECTION", 1, section);
            handler.SaveSectionData(own.c_str(), "SECTION", section, "data", 1, 4, end);
            AppendSection("shared.tdf", "SECTION", static_cast<unsigned>(thread), "data");
            handler.GetSectionDataLengthInBytes("shared.tdf", "DEVID", 1, end);
            EXPECT_EQ(end, 82U);
        },
        20);
    EXPECT_EQ(ReadWhole("shared.tdf").size(), shared.size() + kThreads * 20 * (12 + 7 + 4));
}

TEST_F(Threads, LoadAndUnloadThePluginBesideTheLog) {
    StartLog();
    struct Identifier final : CDeviceIdentifier {
        bool SaveToFile(const std::string&, eTraceDataFileType) override { return true; }
        bool LoadFromFile(const std::string&, eTraceDataFileType) override { return true; }
    };
    std::thread loading([] {
        for (int n = 0; n < 20; ++n) {
            void* const library = ::dlopen(STMDCM_PLUGIN, RTLD_NOW | RTLD_LOCAL);
            const auto create =
                reinterpret_cast<decltype(&CreateDeviceConfigManager)>(::dlsym(library, "CreateDeviceConfigManager"));
            const auto destroy =
                reinterpret_cast<decltype(&DestroyDeviceConfigManager)>(::dlsym(library, "DestroyDeviceConfigManager"));
            CPUInfo cpu{"Core_0/Cluster", 1, 0, 2};
            Identifier identifier;
            auto* const manager = static_cast<CDeviceConfigManager*>(create(&cpu, &identifier));
            EXPECT_TRUE(manager->LoadConfiguration(STMDCM_TEST_DATA "/full.tdf", TRACE_DATA_FILE_TDF));
            destroy(manager);
            ::dlclose(library);
        }
    });
    InThreads([](int thread) { Log(LogInformation, "%s", LineOf(thread).c_str()); });
    loading.join();
}

}  // namespace
}  // namespace stmdcm_test
