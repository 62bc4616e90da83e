#include <malloc.h>

#include <chrono>
#include <set>

#include "tests/sim/LiveTest.h"
#include "trace/dcm/DeviceConfigManager.h"

namespace Zu::Wep::Trace {
namespace {

using LiveConnection = LiveTest;

TEST_F(LiveConnection, TheExampleIsLoadedAndGivenBackInOrder) {
    ::setenv("STMDCM_SCENARIO", STMDCM_SCENARIOS "/example.json", 1);
    EXPECT_TRUE(m_live->LoadConfigurationLive());
    const std::string loaded = Text(*m_live);
    for (const char* line :
         {"STM_data_flip = 1", "HEAD_Present_0 = 1", "HEAD_Pointer_0 = 4096", "STM_DTC_fprocess_clock_hz = 200000000",
          "STM_DTC_target_clock_hz = 1000000000", "STM_DTC_target_pins = 8", "TWP_Protocol = 1"}) {
        EXPECT_NE(loaded.find(line), std::string::npos) << line;
    }
    EXPECT_EQ(ReadWhole(m_home / "Core_0-Cluster-STMCfg.txt.dcm"), loaded);
    TakeLog();
    EXPECT_TRUE(m_live->ConnectLiveSystem());
    EXPECT_EQ(TakeLog(), Lines{});  // connected already
    m_live.reset();
    EXPECT_EQ(TakeLog(), Lines{"M     DCM: Destroying Channel Server "});

    std::string calls = Calls();
    const std::size_t attributes = calls.find("GetAttribute");
    EXPECT_NE(calls.find("\"Trace Data Pin Size \" gives type 2 text \"8\"\n"), std::string::npos);
    calls.erase(attributes, calls.find("DestroyChannelServer") - attributes);
    EXPECT_EQ(calls,
              "library loaded\nCreateTraceFactory\nCreateChannelServer 1\nGetChannelDriver \"Core_0/Cluster\"\n"
              "DestroyChannelServer 0\nDestroyTraceFactory\nlibrary unloaded\n");
}

TEST_F(LiveConnection, ACpuWithoutADriverKeepsItsSettingsFile) {
    const std::string fails = R"({"name": "Core_0/Cluster", "driver_fails": {"with": )";
    for (const std::string& cpu : {R"({"name": "another"})" + std::string(), fails + "\"vornError\"}}",
                                   fails + "\"std\"}}", fails + "\"int\"}}"}) {
        Play(cpu);
        Renew();
        Write("Core_0-Cluster-STMCfg.txt.dcm", "STM_ATB_Id = 42\n");
        EXPECT_TRUE(m_live->LoadConfigurationLive());
        Lines log = kConnected;
        log.emplace_back("    E STM DCM LoadConfigurationLive: get channel driver failed");
        EXPECT_EQ(TakeLiveLog(), log);
        EXPECT_EQ(Get("STM_ATB_Id"), 42);
        EXPECT_EQ(ReadWhole(m_home / "Core_0-Cluster-STMCfg.txt.dcm"), Text(*m_live));
    }
}

TEST_F(LiveConnection, MayBeTriedAgainAfterEachFailure) {
    const Lines server{kLoading, kServerDone};
    const Lines factoryThrows{kLoading, kCreating, "    E STM DCM: Exception in creating trace factory object "};
    const Lines serverThrows{kLoading, kCreating, "    E STM DCM: Exception in creating Channel Server "};
    const std::tuple<const char*, Lines, Lines> cases[] = {
        {R"("unknown": 1,)", factoryThrows, kConnected},
        {R"("factory_fails": {"with": "vornError"},)", factoryThrows, kConnected},
        {R"("factory_fails": {"with": "int"},)", factoryThrows, kConnected},
        {R"("factory_fails": {"with": "nothing"},)", {kLoading, kCreating}, kConnected},
        {R"("server_fails": {"with": "vornError", "times": 1},)", serverThrows, server},
        {R"("server_fails": {"with": "int", "times": 1},)", serverThrows, server},
        {R"("server_fails": {"with": "nothing", "times": 1},)", kConnected, server},
    };
    for (const auto& [fault, log, logAfter] : cases) {
        SCOPED_TRACE(fault);
        Renew();
        PlayAttributes("", fault);
        EXPECT_FALSE(m_live->LoadConfigurationLive());
        EXPECT_EQ(TakeLiveLog(), log);
        PlayAttributes("");
        EXPECT_TRUE(m_live->ConnectLiveSystem());
        EXPECT_EQ(TakeLiveLog(), logAfter);
    }
}

/// The mapped libraries and the number of open descriptors.
std::set<std::string> Held() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    std::set<std::string> held{std::to_string(std::distance(descriptors, {})) + " descriptors"};
    std::istringstream maps(ReadWhole("/proc/self/maps"));
    for (std::string line; std::getline(maps, line);) {
        held.insert(line.find(".so") == line.npos ? "" : line.substr(line.rfind('/') + 1));
    }
    return held;
}

TEST_F(LiveConnection, AThousandLiveLoadsLeaveNothingBehind) {
    ::setenv("STMDCM_SCENARIO", STMDCM_SCENARIOS "/example.json", 1);
    ::unsetenv("STMDCM_SCENARIO_LOG");
    ZU_WEP::uLogSystem::GetLogSystem()->SetLoggingLevel(0);
    const auto load = [&](int times) {
        for (int i = 0; i < times && !HasFailure(); ++i) {
            auto* manager = static_cast<CDeviceConfigManager*>(CreateDeviceConfigManager(&m_cpu, nullptr));
            EXPECT_TRUE(manager->LoadConfigurationLive());
            EXPECT_TRUE(Held().contains("libTraceFactory.so"));
            DestroyDeviceConfigManager(manager);
        }
    };
    load(100);  // until the heap keeps what it keeps
    const std::set<std::string> held = Held();
    EXPECT_FALSE(held.contains("libTraceFactory.so"));
    const std::size_t memory = ::mallinfo2().uordblks;
    load(1000);
    EXPECT_EQ(Held(), held);
    // Less than the smallest leak in each cycle. A sanitizer's heap tells nothing here and looks for leaks itself.
    EXPECT_LE(::mallinfo2().uordblks, memory + 16'384);
}

TEST_F(LiveConnection, ASlowTargetIsWaitedFor) {
    PlayAttributes("", R"("delay_ms": 2,)");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(m_live->LoadConfigurationLive());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(28));  // 14 calls
}

TEST_F(LiveConnection, TheFactoryIsGivenBackBehindAServerOnly) {
    PlayAttributes("", R"("server_fails": {"with": "vornError", "times": 1}, "server_end_fails": {"with": "int"},)");
    EXPECT_FALSE(m_live->ConnectLiveSystem());
    TakeLog();
    m_live.reset();
    EXPECT_EQ(TakeLog(), Lines{});
    EXPECT_TRUE(Calls().ends_with("CreateChannelServer 1 throws\nlibrary unloaded with 1 factories left\n"));
    Renew();
    EXPECT_FALSE(m_live->ConnectLiveSystem());
    EXPECT_TRUE(m_live->ConnectLiveSystem());
    m_live.reset();
    EXPECT_TRUE(
        Calls().ends_with("DestroyChannelServer 0 throws\n"
                          "DestroyTraceFactory with 1 channel servers left\nlibrary unloaded\n"));
}

// Each of these two runs with another library in the place of the simulator's.
struct OtherLibraries : LiveTest {
    void ExpectAtEachAttempt(const Lines& log) {
        for (int attempt = 0; attempt < 2; ++attempt) {
            EXPECT_FALSE(m_live->LoadConfigurationLive());
            EXPECT_EQ(TakeLiveLog(), log);
        }
    }
};

TEST_F(OtherLibraries, NoFactory) { ExpectAtEachAttempt({kLoading, "    E STM DCM: Cannot get Trace Facotry Dll "}); }

TEST_F(OtherLibraries, NoLibrary) { ExpectAtEachAttempt({kLoading}); }

}  // namespace
}  // namespace Zu::Wep::Trace
