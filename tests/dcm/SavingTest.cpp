#include <fcntl.h>
#include <sys/file.h>

#include <chrono>

#include "host/vorn/vornError.h"
#include "source_utilities/PosixFile.h"
#include "tests/dcm/ManagerTest.h"
#include "tests/support/AppendSection.h"
#include "tests/support/FreeDescriptors.h"
#include "tests/support/KillAtSyscall.h"
#include "trace/tdf/TDFHandler.h"

namespace Zu::Wep::Trace {
namespace {

class SavingTest : public ManagerTest {
  protected:
    SavingTest() {
        ResetLog();
        Load(Sample("full.tdf"));
        ConfigPropertyValue value;
        value.value.integer = 99;
        m_manager->SetSTMProperty("STM_ATB_Id", value);
        TDFHandler().CreateTDFFile(m_capture.c_str());
        stmdcm_test::AppendSection(m_capture, "DEVID", 1, "serial = 1\n");
    }
    int Save() { return m_manager->SaveConfiguration(m_capture, TRACE_DATA_FILE_TDF) ? 0 : 1; }
    /// What the capture loads to, the result first.
    std::string Loaded() {
        const auto manager = Make();
        const bool result = manager->LoadConfiguration(m_capture, TRACE_DATA_FILE_TDF);
        return std::to_string(result) + (result ? Text(*manager) : "");
    }

    std::string m_capture = m_home / "saved.tdf";
};

TEST_F(SavingTest, TheOldestConfigurationIsTheOneThatLoads) {
    Save();
    const std::string first = Loaded();
    EXPECT_EQ(first, "1" + Text());
    m_manager->ExtractValue("STM_ATB_Id", "5");
    Save();
    EXPECT_EQ(Loaded(), first);
}

TEST_F(SavingTest, NoCaptureIsQuietlyNotWritten) {
    const std::string path = Write("plain.txt", "TDF2");
    EXPECT_TRUE(m_manager->SaveSTMConfigurationToTDF(path));
    EXPECT_FALSE(m_manager->LoadSTMConfigurationFromTDF(path));
    EXPECT_FALSE(m_manager->SaveConfiguration(path, TRACE_DATA_FILE_TDF));
    EXPECT_EQ(ReadWhole(path), "TDF2");
}

TEST_F(SavingTest, SettingsThatCannotBeOpenedAreNotWrittenAndLogged) {
    UsecaseInfoIF* usecase = m_manager->GetUsecaseRecord()->GetAUsecaseInfo();
    usecase->SetModuleName(std::string(200, 'n').c_str());  // a line in the log when the text is built
    m_manager->GetUsecaseRecord()->AddUsecase(usecase);
    std::filesystem::create_directory(m_home / "d.dcm");
    Write("s.dcm", "old");
    const auto save = [this](const char* name) { return m_manager->SaveConfiguration(name, TRACE_DATA_FILE_LIVE); };
    const auto lines = [this](const std::string& name, const std::string& line) {
        const std::string path = m_home / name;
        return std::vector<std::string>{"M     STM Device DCM: SaveSTMConfigurationLive " + path, line};
    };
    const std::string cannot = " W    STM Device DCM: SaveSTMConfigurationLive can't open " + m_home.Path();
    TakeLog();
    EXPECT_TRUE(save("d"));
    EXPECT_EQ(TakeLog(), lines("d", cannot + "/d.dcm: Is a directory"));
    for (const int descriptors : {0, 1}) {
        const auto work = [&] {
            m_logger->OpenFile();
            stmdcm_test::LeaveDescriptors(descriptors);
            return int{save("s")};
        };
        EXPECT_EQ(stmdcm_test::RunInChild(work), 1);
        const std::string cut = " W    Use case: value of \"name\" cut to 121 characters";
        EXPECT_EQ(TakeLog(), lines("s", descriptors == 0 ? cannot + "/s.dcm: Too many open files" : cut));
        EXPECT_EQ(ReadWhole(m_home / "s.dcm"), descriptors == 0 ? "old" : Text());
    }
}

TEST_F(SavingTest, AHostThatCannotSaveItsPartIsAFailure) {
    struct : CDeviceIdentifier {
        bool SaveToFile(const std::string&, eTraceDataFileType) override {
            throw Vorn::vornError("disk full", Vorn::vornErrorIF::Severity_Error);
        }
        bool LoadFromFile(const std::string&, eTraceDataFileType) override { return true; }
    } identifier;
    StmDeviceConfigManager manager(&m_cpu, &identifier);
    EXPECT_FALSE(manager.SaveConfiguration(m_capture, TRACE_DATA_FILE_TDF));
    EXPECT_FALSE(manager.SaveConfiguration("s", TRACE_DATA_FILE_LIVE));
    EXPECT_NO_THROW(manager.SaveAllConfiguration());
}

TEST_F(SavingTest, AHostThatHoldsTheLockItselfWaitsFiveSecondsInAll) {
    const ZU_WEP::PosixFile host = ZU_WEP::PosixFile::Open(m_capture.c_str(), O_RDONLY);
    ASSERT_EQ(::flock(host.Descriptor(), LOCK_EX), 0);
    StartLog(1);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Save(), 0);
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::seconds(5));
    EXPECT_LT(waited, std::chrono::seconds(10));  // what two waits would take
    std::vector<std::string> log = TakeLog();
    std::erase_if(log, [](const std::string& line) { return !line.starts_with(" W"); });
    EXPECT_EQ(log, std::vector<std::string>{" W    " + m_capture +
                                            ": another holds its lock and does not let go, saving without it"});
    EXPECT_EQ(Loaded(), "1" + Text());
}

}  // namespace
}  // namespace Zu::Wep::Trace
