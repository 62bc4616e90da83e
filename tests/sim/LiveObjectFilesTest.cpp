#include <sys/stat.h>
#include <utime.h>

#include "tests/sim/LiveTest.h"

namespace Zu::Wep::Trace {
namespace {

class LiveObjectFiles : public LiveTest {
  protected:
    std::string Program(const std::string& name, std::time_t modified) {
        const std::string path = Write(name, "program");
        const utimbuf times{modified, modified};
        ::utime(path.c_str(), &times);
        return path;
    }
    static std::string Running(const std::string& cpu, const std::string& file, const std::string& fault = "") {
        return "{\"name\": " + Quoted(cpu) + ", \"object_file\": " + Quoted(file) +
               (fault.empty() ? "" : ", \"object_file_fails\": {" + fault + "}") + "}";
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
};

TEST_F(LiveObjectFiles, AreBroughtUpToDateByEachQuestion) {
    const std::string file = Program("a.out", 1700000000);
    Connect(Running("core0", file) + "," + Running("core1", file) + "," + Running("core", "/none.out"));
    std::string answer;
    EXPECT_TRUE(m_live->GetObjectFile("core1", answer));
    EXPECT_EQ(answer, file);
    EXPECT_EQ(TakeLog(), (Lines{"M     DCM: live system CPU = core0; OutFile=" + file,
                                "M     DCM: live system CPU = core1; OutFile=" + file,
                                "M     DCM: live system CPU = core; OutFile=/none.out"}));
    EXPECT_EQ(Known(), "core0=a.out@1700000000 core1=a.out@1700000000 core=none.out@0 ");
    Program("a.out", 1700000005);
    EXPECT_TRUE(m_live->GetObjectFile("core", answer));  // the exact name goes before core0, which contains it
    EXPECT_EQ(answer, "/none.out");
    EXPECT_EQ(Known(), "core0=a.out@1700000005 core1=a.out@1700000005 core=none.out@0 ");
}

TEST_F(LiveObjectFiles, AHostErrorEndsTheRefreshAndAnyOtherReachesTheCaller) {
    const std::string file = Program("a.out", 7);
    Connect(Running("core0", file) + "," + Running("core1", file, R"("with": "vornError", "times": 1)") + "," +
            Running("core2", file, R"("with": "std", "times": 1)"));
    EXPECT_NO_THROW(m_live->GetLiveSystemObjectFiles());
    EXPECT_EQ(Known(), "core0=a.out@7 ");
    EXPECT_THROW(m_live->GetLiveSystemObjectFiles(), std::runtime_error);
    EXPECT_EQ(Known(), "core0=a.out@7 core1=a.out@7 ");
    m_live->GetLiveSystemObjectFiles();
    EXPECT_EQ(Known(), "core0=a.out@7 core1=a.out@7 core2=a.out@7 ");
}

TEST_F(LiveObjectFiles, AListThatFailsReachesTheCaller) {
    Connect(Named("core0"), R"("list_fails": {"with": "vornError", "times": 1},)");
    std::string answer;
    EXPECT_THROW(m_live->GetObjectFile("core0", answer), Vorn::vornErrorIF);
    EXPECT_TRUE(m_live->GetObjectFile("core0", answer));
    EXPECT_EQ(answer, "");
}

TEST_F(LiveObjectFiles, GoIntoACaptureWhenARefreshIsAskedFor) {
    Connect(Running("core0", Program("a.out", 1700000000)));
    const std::string capture = Write("new.tdf", "TDF2");
    for (const bool refresh : {false, true}) {
        m_live->m_refreshObjectFiles = refresh;
        WriteWhole(capture, ReadWhole(Sample("empty.tdf")));
        EXPECT_TRUE(m_live->SaveConfiguration(capture, TRACE_DATA_FILE_TDF));
        EXPECT_EQ(ReadWhole(capture).find(std::string("core0\0", 6) + m_home / "a.out") != std::string::npos, refresh);
    }
}

}  // namespace
}  // namespace Zu::Wep::Trace
