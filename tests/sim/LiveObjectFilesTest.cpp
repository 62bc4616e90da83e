#include "tests/sim/LiveTest.h"

namespace Zu::Wep::Trace {
namespace {

class LiveObjectFiles : public LiveTest {
  protected:
    static std::string Running(const std::string& cpu, const std::string& file, const std::string& more = "") {
        return R"({"name": ")" + cpu + R"(", "object_file": ")" + file + "\"" + more + "}";
    }
    void Connect(const std::string& cpus, const std::string& more = "") {
        Play(cpus, more);
        ASSERT_TRUE(m_live->ConnectLiveSystem());
        TakeLog();
    }
    /// "name=file@time " for each known CPU.
    std::string Known() {
        std::string known;
        for (std::size_t i = 0; i < m_live->m_objectFiles.size(); ++i) {
            const FILE_Info& file = *m_live->m_objectFiles[i];
            known += m_live->m_objectFileNames.at(i) + "=" + file.fileName.substr(file.fileName.rfind('/') + 1) + "@" +
                     std::to_string(file.timeStamp) + " ";
        }
        return known;
    }

    std::string m_file = m_home / "a.out";
    std::string m_answer;
};

TEST_F(LiveObjectFiles, AreBroughtUpToDateByEachQuestion) {
    stmdcm_test::WriteDated(m_file, 1700000000);
    Connect(Running("core0", m_file) + "," + Running("core1", m_file) + "," +
            Running("core", "/none.out", R"(, "object_file_fails": {"with": "nothing", "times": 1})"));
    EXPECT_TRUE(m_live->GetObjectFile("core1", m_answer));
    EXPECT_EQ(m_answer, m_file);
    EXPECT_EQ(TakeLog(), (Lines{"M     DCM: live system CPU = core0; OutFile=" + m_file,
                                "M     DCM: live system CPU = core1; OutFile=" + m_file,
                                "M     DCM: live system CPU = core; OutFile="}));
    EXPECT_EQ(Known(), "core0=a.out@1700000000 core1=a.out@1700000000 core=@0 ");
    stmdcm_test::WriteDated(m_file, 1700000005);
    EXPECT_TRUE(m_live->GetObjectFile("core", m_answer));  // the exact name goes before core0, which contains it
    EXPECT_EQ(m_answer, "/none.out");
    EXPECT_EQ(Known(), "core0=a.out@1700000005 core1=a.out@1700000005 core=none.out@0 ");
}

TEST_F(LiveObjectFiles, AHostErrorAboutAFileEndsTheRefreshAndAnyOtherReachesTheCaller) {
    stmdcm_test::WriteDated(m_file, 7);
    Connect(Running("core0", m_file) + "," +
                Running("core1", m_file, R"(, "object_file_fails": {"with": "vornError", "times": 1})") + "," +
                Running("core2", m_file, R"(, "object_file_fails": {"with": "std", "times": 1})"),
            R"("list_fails": {"with": "vornError", "times": 1},)");
    EXPECT_THROW(m_live->GetObjectFile("core0", m_answer), Vorn::vornErrorIF);  // from the list
    EXPECT_EQ(Known(), "");
    EXPECT_TRUE(m_live->GetObjectFile("core0", m_answer));
    EXPECT_EQ(Known(), "core0=a.out@7 ");
    EXPECT_THROW(m_live->GetLiveSystemObjectFiles(), std::runtime_error);
    EXPECT_EQ(Known(), "core0=a.out@7 core1=a.out@7 ");
}

TEST_F(LiveObjectFiles, GoIntoACaptureWhenARefreshIsAskedFor) {
    Connect(Running("core0", m_file));
    for (const bool refresh : {false, true}) {
        m_live->m_refreshObjectFiles = refresh;
        const std::string capture = Copy("empty.tdf");
        EXPECT_TRUE(m_live->SaveConfiguration(capture, TRACE_DATA_FILE_TDF));
        EXPECT_EQ(ReadWhole(capture).find(std::string("core0\0", 6) + m_file) != std::string::npos, refresh);
    }
}

}  // namespace
}  // namespace Zu::Wep::Trace
