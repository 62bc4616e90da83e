#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <chrono>

#include "host/vorn/vornError.h"
#include "source_utilities/PosixFile.h"
#include "tests/dcm/ManagerTest.h"
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
        AppendByTwoSteps("DEVID", "serial = 1\n");
        m_before = ReadWhole(m_capture);
    }
    void AppendByTwoSteps(const char* name, const std::string& payload) {
        unsigned offset = 0, length = 0;
        TDFHandler().SaveSectionHeader(m_capture.c_str(), name, 1, offset);
        TDFHandler().SaveSectionData(m_capture.c_str(), name, offset, payload.data(), 1,
                                     static_cast<unsigned>(payload.size()), length);
    }
    int Save() { return m_manager->SaveConfiguration(m_capture, TRACE_DATA_FILE_TDF) ? 0 : 1; }
    /// What the capture loads to, the result first.
    std::string Loaded() {
        const auto manager = Make();
        const bool result = manager->LoadConfiguration(m_capture, TRACE_DATA_FILE_TDF);
        return std::to_string(result) + (result ? Text(*manager) : "");
    }

    std::string m_capture = m_home / "saved.tdf";
    std::string m_before;
};

TEST_F(SavingTest, WritesTheBytesOfTheTwoStepProtocol) {
    EXPECT_EQ(Save(), 0);
    const std::string saved = ReadWhole(m_capture);
    EXPECT_EQ(Loaded(), "1" + Text());
    WriteWhole(m_capture, m_before);
    std::string common;
    for (const int core : {0, 1}) {
        common += "core" + std::to_string(core) + '\0' + "/opt/images/app" + std::to_string(core) + ".out" + '\0';
        common += static_cast<char>(core) + std::string("\xF1\x53\x65\0\0\0\0", 7);
    }
    AppendByTwoSteps("DCM_COMMON", common.substr(common.find("core1")));  // core0 has lost its path to the check
    AppendByTwoSteps("STMDECODERINFO", Text());
    EXPECT_EQ(saved, ReadWhole(m_capture));
}

TEST_F(SavingTest, TheOldestConfigurationIsTheOneThatLoads) {
    Save();
    const std::string first = Loaded();
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

TEST_F(SavingTest, WhateverStopsASaveLeavesOldOrNew) {
    const std::string old = Loaded(), oldSettings = "STM_ATB_Id = 3\n";
    const auto work = [this] { return Save() + 2 * int{!m_manager->SaveConfiguration("s", TRACE_DATA_FILE_LIVE)}; };
    const auto stop = [&](const auto& how) {
        WriteWhole(m_capture, m_before);
        WriteWhole(m_home / "s.dcm", oldSettings);
        const stmdcm_test::ChildRun run = how();
        const std::string loaded = Loaded(), settings = ReadWhole(m_home / "s.dcm");
        EXPECT_TRUE(loaded == "1" + Text() || ((run.exitStatus & 1) != 0 && loaded == old)) << loaded;
        EXPECT_TRUE(settings == Text() || ((run.exitStatus & 2) != 0 && settings == oldSettings)) << settings;
        EXPECT_EQ(Save(), 0);
        EXPECT_EQ(Loaded(), "1" + Text());
        return run.reached;
    };
    for (unsigned n = 1; stop([&] { return stmdcm_test::KillAtSyscall(n, work); }); ++n) {
    }
    for (const int error : {ENOSPC, EIO, EINTR}) {
        const std::vector<long> calls{SYS_openat,    SYS_read,  SYS_pread64,   SYS_pwritev,  SYS_flock,
                                      SYS_fallocate, SYS_fsync, SYS_fdatasync, SYS_ftruncate};
        for (unsigned n = 1; stop([&] { return stmdcm_test::FailAtSyscall(n, error, calls, work); }); ++n) {
        }
    }
}

TEST_F(SavingTest, AFileSizeLimitIsAFailureNotASignal) {
    Write("s.dcm", "STM_ATB_Id = 3\n");
    const int status = stmdcm_test::RunInChild([this] {
        const rlimit limit{200, 200};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        return Save() * 2 + (m_manager->SaveConfiguration("s", TRACE_DATA_FILE_LIVE) ? 0 : 1);
    });
    EXPECT_EQ(status, 3);
    EXPECT_EQ(ReadWhole(m_home / "s.dcm"), "STM_ATB_Id = 3\n");
    EXPECT_EQ(ReadWhole(m_capture), m_before);
}

}  // namespace
}  // namespace Zu::Wep::Trace
