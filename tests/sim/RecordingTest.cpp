#include "sim/record/Recording.h"
#include "tests/sim/LiveTest.h"

namespace Zu::Wep::Trace {
namespace {

/// The recorder stands in front of the simulator (tests/sim/CMakeLists.txt).
class Recorded : public LiveTest {
  protected:
    struct Told {
        std::string results, log, calls, settings, recording;
    };

    Recorded() { ::setenv("STMDCM_RECORD_FACTORY", STMDCM_SIMULATOR, 1); }

    /// All that a manager gets of that scenario.
    Told Ask(const std::string& scenario, const std::string& recording) {
        ::setenv("STMDCM_SCENARIO", (m_home / scenario).c_str(), 1);
        ::setenv("STMDCM_RECORD_FILE", (m_home / recording).c_str(), 1);
        std::filesystem::remove(m_home / "calls.txt");
        Renew();
        Told told;
        for (int i = 0; i < 3; ++i) {
            told.results += m_live->LoadConfigurationLive() ? "loaded\n" : "not loaded\n";
            std::string file = "none";
            try {
                told.results += m_live->GetObjectFile("core", file) ? file + "\n" : "nothing\n";
            } catch (const std::exception& error) {
                told.results += error.what() + file;
            } catch (int number) {
                told.results += std::to_string(number) + file;
            }
        }
        const std::string settings = m_home / "Core_0-Cluster-STMCfg.txt.dcm";
        told.settings = ReadWhole(settings);
        std::filesystem::remove(settings);
        m_live.reset();
        for (const std::string& line : TakeLiveLog()) {
            told.log += line + "\n";
        }
        told.calls = Calls();
        told.recording = ReadWhole(m_home / recording);
        return told;
    }
};

TEST_F(Recorded, ATargetFailsAgainAsItDid) {
    std::vector<std::pair<std::string, std::string>> cases = {
        {"", R"("object_file": ["/a", "/a", "/b"])"},
        {"", R"("attributes": {"Trace Data Pin Size ": [{"type": "integer", "text": "8", "times": 2}, {"type": 9},
                {"fails": {"with": "std", "message": ""}}], "TWP Source": {"type": "flag", "text": null}})"},
        {R"("lists": [["Core_0/Cluster"], [], ["other", "Core_0/Cluster"]], )", R"("object_file": "/a")"},
        {R"("list_fails": [{"with": "none", "times": 2}, {"with": "int"}, {"with": "nothing"}], )", ""},
    };
    for (const std::string kind : {"vornError", "std", "int", "nothing"}) {
        for (const std::string times : {"", R"(, "times": 1)"}) {
            const std::string fails = R"(_fails": {"with": ")" + kind + "\"" + times + "}";
            for (const std::string call : {"server", "server_end", "list"}) {
                cases.emplace_back("\"" + call + fails + ", ", "");
            }
            cases.emplace_back("", "\"driver" + fails);
            cases.emplace_back("", "\"object_file" + fails);
            cases.emplace_back("",
                               R"("attributes": {"Trace Clock Frequency": {"type": "double", "text": "2e8", "fails")" +
                                   fails.substr(fails.find(':')) + "}}");
        }
        cases.emplace_back(R"("factory_fails": {"with": ")" + kind + R"("}, )", "");
    }
    for (const auto& [target, cpu] : cases) {
        SCOPED_TRACE(target + cpu);
        Play(R"({"name": "Core_0/Cluster")" + (cpu.empty() ? "" : ", " + cpu) + R"(}, {"name": "other"})", target);
        const Told first = Ask("target.json", "first.json");
        const Told second = Ask("first.json", "second.json");
        EXPECT_EQ(second.results, first.results) << first.recording;
        EXPECT_EQ(second.log, first.log);
        EXPECT_EQ(second.settings, first.settings);
        if ((target + cpu).find("nothing") == std::string::npos) {  // nobody can tell it from an empty path, or an end
            EXPECT_EQ(second.calls, first.calls);
        }
        EXPECT_EQ(second.recording, first.recording);
        EXPECT_NE(first.recording, "");
    }
}

TEST_F(Recorded, WhatAFailingCallGaveIsTheHostsAllTheSame) {
    ::setenv("STMDCM_RECORD_FACTORY", STMDCM_GIVING_FACTORY, 1);
    const Told told = Ask("none.json", "giving.json");
    EXPECT_NE(told.settings.find("STM_DTC_target_pins = 7\n"), std::string::npos) << told.settings << told.log;
    EXPECT_NE(told.recording.find("a driver was given by a call that failed at once"), std::string::npos);
}

/// No simulated target can give these.
TEST_F(Recorded, WhatNoScenarioCanSayIsARemark) {
    stmdcm_sim::Recording recording;
    recording.AddList({"Core_0/Cluster", ""});
    recording.Cpu("Core_0/Cluster").objectFiles = {std::string("/a\0b", 4), "/\xff"};
    recording.Write(m_home / "odd.json");
    const std::string written = ReadWhole(m_home / "odd.json");
    for (const char* remark : {"a CPU without a name is left out", "a text that is no UTF-8, or holds a zero byte"}) {
        EXPECT_NE(written.find(remark), std::string::npos) << written;
    }
    EXPECT_EQ(Ask("odd.json", "again.json").results.substr(0, 7), "loaded\n");
}

}  // namespace
}  // namespace Zu::Wep::Trace
