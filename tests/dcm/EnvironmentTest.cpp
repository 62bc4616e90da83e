#include <ctime>
#include <locale>

#include "tests/dcm/ManagerTest.h"
#include "tests/support/KillAtSyscall.h"
#include "trace/dcm/DeviceConfigManager.h"

namespace Zu::Wep::Trace {
namespace {

/// Each case runs in a process of its own, since the set-up is made once per process.
class EnvironmentTest : public testing::Test {
  protected:
    static void InFreshProcess(const std::function<bool()>& work) {
        EXPECT_EQ(stmdcm_test::RunInChild([&] { return work() ? 0 : 1; }), 0);
    }
    static std::string LogFileName(const std::string& process) {
        const std::time_t now = std::time(nullptr);
        const std::tm& local = *std::localtime(&now);
        return "zu_trace_log_" + std::to_string(local.tm_mon) + std::to_string(local.tm_mday) +
               std::to_string(local.tm_year + 1900) + '_' + process + ".txt";
    }
    void SetUp() override {
        ::setenv("HOME", m_home.Path().c_str(), 1);
        ::setenv("ZU_TRACE_LOGGING", "1", 1);
        for (const char* name :
             {"ZU_TRACE_DEBUGCLIENT_PID", "ZU_TRACE_LOGGING_DIR", "ZU_TRACE_DATA_DIR", "ZU_TRACE_SETTINGS_DIR"}) {
            ::unsetenv(name);
        }
    }

    ScratchDir m_home{stmdcm_test::MemoryDirectory()};
    CPUInfo m_cpu{"cpu", 1, 0, 2};
};

/// What a host does that shows its user "4.711" for 4711.
void GroupDigits() {
    struct Points : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\1"; }
    };
    std::locale::global(std::locale(std::locale(), new Points));
}

TEST_F(EnvironmentTest, FirstManagerPublishesDirectoriesAndProcess) {
    InFreshProcess([this] {
        GroupDigits();
        DestroyDeviceConfigManager(static_cast<CDeviceConfigManager*>(CreateDeviceConfigManager(&m_cpu, nullptr)));
        const std::string process = std::to_string(::getpid());
        const std::string root = m_home / ".ZU-trace";
        const std::string log = ReadWhole(root + "/" + LogFileName(process));
        return ::getenv("ZU_TRACE_DEBUGCLIENT_PID") == process && ::getenv("ZU_TRACE_LOGGING_DIR") == root &&
               ::getenv("ZU_TRACE_DATA_DIR") == root + "/data" &&
               ::getenv("ZU_TRACE_SETTINGS_DIR") == root + "/settings" &&
               std::filesystem::is_directory(root + "/data") &&
               log.find("Logger : trace user settings directory is " + root + "/settings\n") != std::string::npos &&
               log.find("LoadSTMConfiguration fail to open file: " + root + "/settings/cpu-STMCfg.txt.dcm\n") !=
                   std::string::npos;
    });
}

TEST_F(EnvironmentTest, TheDebugClientIsKeptWhileItRuns) {
    const std::string parent = std::to_string(::getpid());
    for (const bool runs : {true, false}) {
        InFreshProcess([&] {
            ::setenv("ZU_TRACE_DEBUGCLIENT_PID", runs ? parent.c_str() : "no number", 1);
            const StmDeviceConfigManager manager(&m_cpu, nullptr);
            const std::string process = runs ? parent : std::to_string(::getpid());
            return ::getenv("ZU_TRACE_DEBUGCLIENT_PID") == process &&
                   std::filesystem::exists(m_home / ".ZU-trace/" + LogFileName(process));
        });
    }
}

TEST_F(EnvironmentTest, AManagerIsMadeWithoutAHomeAndTheNextTriesAgain) {
    InFreshProcess([this] {
        ::unsetenv("HOME");
        StmDeviceConfigManager first(&m_cpu, nullptr);
        ConfigPropertyValue value;
        const bool works = first.GetProperty("STM_ATB_Id", value) && ::getenv("ZU_TRACE_SETTINGS_DIR") == nullptr;
        ::setenv("HOME", m_home.Path().c_str(), 1);
        const StmDeviceConfigManager second(&m_cpu, nullptr);
        return works && std::filesystem::is_directory(m_home / ".ZU-trace/settings");
    });
}

}  // namespace
}  // namespace Zu::Wep::Trace
