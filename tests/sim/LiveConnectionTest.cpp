#include "tests/sim/LiveTest.h"

namespace Zu::Wep::Trace {
namespace {

using LiveConnection = LiveTest;

TEST_F(LiveConnection, TheExampleIsLoadedOnceAndGivenBackInOrder) {
    ::setenv("STMDCM_SCENARIO", STMDCM_SCENARIOS "/example.json", 1);
    EXPECT_TRUE(m_live->LoadConfigurationLive());
    const std::string loaded = Text(*m_live);
    for (const char* line : {"STM_data_flip = 1", "HEAD_Present_0 = 1", "HEAD_Pointer_0 = 4096",
                             "STM_Buffer_Wrapped = 1", "STM_DTC_fprocess_clock_hz = 200000000",
                             "STM_DTC_target_clock_hz = 1000000000", "STM_DTC_target_pins = 8", "TWP_Protocol = 1"}) {
        EXPECT_NE(loaded.find(line), std::string::npos) << line;
    }
    EXPECT_EQ(ReadWhole(m_home / "Core_0-Cluster-STMCfg.txt.dcm"), loaded);
    TakeLog();
    EXPECT_TRUE(m_live->ConnectLiveSystem());
    EXPECT_EQ(TakeLog(), Lines{});
    m_live.reset();
    EXPECT_EQ(TakeLog(), Lines{"M     DCM: Destroying Channel Server "});

    Lines calls = Calls();
    ASSERT_EQ(calls.size(), 4U + 11 + 3);
    EXPECT_EQ(calls.at(6), R"(GetAttribute "Core_0/Cluster" "Trace Data Pin Size " gives type 2 text "8")");
    calls.erase(calls.begin() + 4, calls.begin() + 15);
    EXPECT_THAT(calls, ElementsAreArray({"library loaded", "CreateTraceFactory", "CreateChannelServer 1",
                                         R"(GetChannelDriver "Core_0/Cluster")", "DestroyChannelServer 0",
                                         "DestroyTraceFactory", "library unloaded"}));
}

TEST_F(LiveConnection, TheSettingsFileGivesWhatTheTargetDoesNot) {
    PlayAttributes(R"("TWP Source": {"type": "flag", "text": "1"})");
    Write("Core_0-Cluster-STMCfg.txt.dcm", "STM_ATB_Id = 42\nSTM_DTC_target_pins = 2\n");
    Set("STM_ATB_Id", 1);
    EXPECT_TRUE(m_live->LoadConfigurationLive());
    EXPECT_EQ(Get("STM_ATB_Id"), 42);
    EXPECT_EQ(Get("STM_DTC_target_pins"), 2);
    EXPECT_EQ(Get("TWP_Protocol"), 1);
}

TEST_F(LiveConnection, ACpuWithoutADriver) {
    const std::string missing = "    E STM DCM LoadConfigurationLive: get channel driver failed";
    const std::string cpu = R"({"name": "Core_0/Cluster", "driver_fails": {"with": )";
    for (const std::string& cpus : {Named("another"), cpu + "\"vornError\"}}", cpu + "\"std\"}}", cpu + "\"int\"}}"}) {
        Play(cpus);
        m_live = std::make_unique<Manager>(&m_cpu, nullptr);
        TakeLog();
        std::filesystem::remove(m_home / "Core_0-Cluster-STMCfg.txt.dcm");
        EXPECT_TRUE(m_live->LoadConfigurationLive());
        EXPECT_EQ(TakeLiveLog(), (Lines{kLoading, kCreating, kServerDone, missing}));
        EXPECT_EQ(ReadWhole(m_home / "Core_0-Cluster-STMCfg.txt.dcm"), Text(*m_live));
    }
    Play(cpu + "\"nothing\"}}");
    m_live = std::make_unique<Manager>(&m_cpu, nullptr);
    TakeLog();
    EXPECT_TRUE(m_live->LoadConfigurationLive());
    EXPECT_EQ(TakeLiveLog(), (Lines{kLoading, kCreating, kServerDone}));
}

TEST_F(LiveConnection, MayBeTriedAgainAfterEachFailure) {
    struct Case {
        const char* fault;
        Lines log;
        Lines logAfter;  ///< of the attempt that goes well
    };
    const Lines whole{kLoading, kCreating, kServerDone};
    const Lines server{kLoading, kServerDone};
    const Lines factoryThrows{kLoading, kCreating, kFactoryException};
    const Lines serverThrows{kLoading, kCreating, kServerException};
    const Case cases[] = {
        {R"("unknown": 1)", factoryThrows, whole},
        {R"("factory_fails": {"with": "vornError"})", factoryThrows, whole},
        {R"("factory_fails": {"with": "std"})", factoryThrows, whole},
        {R"("factory_fails": {"with": "int"})", factoryThrows, whole},
        {R"("factory_fails": {"with": "nothing"})", {kLoading, kCreating}, whole},
        {R"("server_fails": {"with": "vornError", "times": 1})", serverThrows, server},
        {R"("server_fails": {"with": "std", "times": 1})", serverThrows, server},
        {R"("server_fails": {"with": "int", "times": 1})", serverThrows, server},
        {R"("server_fails": {"with": "nothing", "times": 1})", {kLoading, kCreating, kServerDone}, server},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.fault);
        m_live = std::make_unique<Manager>(&m_cpu, nullptr);
        TakeLog();
        PlayAttributes("", one.fault + std::string(","));
        EXPECT_FALSE(m_live->LoadConfigurationLive());
        EXPECT_EQ(TakeLiveLog(), one.log);
        PlayAttributes("");
        EXPECT_TRUE(m_live->ConnectLiveSystem());
        EXPECT_EQ(TakeLiveLog(), one.logAfter);
    }
}

TEST_F(LiveConnection, AFactoryWithoutAServerIsGivenBack) {
    PlayAttributes("", R"("server_fails": {"with": "vornError"},)");
    EXPECT_FALSE(m_live->ConnectLiveSystem());
    TakeLog();
    m_live.reset();
    EXPECT_EQ(TakeLog(), Lines{});
    EXPECT_THAT(Calls(), ElementsAreArray({"library loaded", "CreateTraceFactory", "CreateChannelServer 1 throws",
                                           "DestroyTraceFactory", "library unloaded"}));
}

}  // namespace
}  // namespace Zu::Wep::Trace
