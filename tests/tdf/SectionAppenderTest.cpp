#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <thread>

#include "tests/tdf/CaptureTest.h"

namespace Zu::Wep::Trace {
namespace {

const char* const Name = "STMDECODERINFO";
const std::string Payload(5000, 'p');

struct SectionAppenderTest : CaptureTest {
    std::string m_before, m_after;

    /// 0 when the section was appended, 1 when that failed.
    int Append() {
        return ErrorOf([&] { AppendSection(m_path, Name, 9, Payload); }).empty() ? 0 : 1;
    }
    void Prepare(const char* reference) {
        Copy(reference);
        m_before = ReadWhole(m_file);
        ASSERT_EQ(Append(), 0);
        m_after = ReadWhole(m_file);
    }
};

TEST_F(SectionAppenderTest, LeavesAllOrNothingWhereverItIsKilledOrFails) {
    for (const char* reference : {"full.tdf", "torn-payload.tdf", "torn-header.tdf"}) {
        Prepare(reference);
        EXPECT_EQ(m_after.substr(0, m_before.size()), m_before);
        EXPECT_EQ(ErrorOf([&] { EXPECT_EQ(ReadSection(m_path, Name, 9), Payload); }).empty(),
                  std::string(reference) != "torn-header.tdf");
        bool killed = true, failed = true;
        for (unsigned n = 1; killed || failed; ++n) {
            WriteWhole(m_file, m_before);
            killed = stmdcm_test::KillAtSyscall(n, [&] { return Append(); }).reached;
            const std::string left = ReadWhole(m_file);
            ASSERT_TRUE(left == m_after || (killed && left == m_before)) << reference << " killed at call " << n;

            WriteWhole(m_file, m_before);
            const auto run = stmdcm_test::FailAtSyscall(
                n, ENOSPC, {SYS_openat, SYS_flock, SYS_fallocate, SYS_pwritev, SYS_fdatasync, SYS_ftruncate},
                [&] { return Append(); });
            failed = run.reached;
            ASSERT_TRUE(ReadWhole(m_file) == (run.exitStatus == 0 ? m_after : m_before))
                << reference << " failed at call " << n;
        }
    }
}

TEST_F(SectionAppenderTest, ReachesPastWhateverAPowerLossLeavesOfASection) {
    Prepare("full.tdf");
    for (std::size_t size = m_before.size(); size < m_after.size(); ++size) {
        WriteWhole(m_file, m_after.substr(0, size));
        AppendSection(m_path, "NEXT", 1, Payload);
        const bool lengthIsThere = size == m_before.size() || size >= m_before.size() + SectionHeader::LengthSize;
        EXPECT_EQ(ErrorOf([&] { EXPECT_EQ(ReadSection(m_path, "NEXT", 1), Payload); }).empty(), lengthIsThere) << size;
        EXPECT_TRUE(ReadWhole(m_file).starts_with(m_after.substr(0, size)));
    }
}

TEST_F(SectionAppenderTest, MeetsAFileSizeLimitAsAnError) {
    for (const char* parent : {"/tmp", "/dev/shm"}) {
        const stmdcm_test::ScratchDir directory(parent);
        const std::string path = directory / "limited.tdf";
        WriteWhole(path, Reference("full.tdf"));
        EXPECT_EQ(stmdcm_test::RunInChild([&] {
                      const rlimit limit{FileSize(path.c_str()) + 2, FileSize(path.c_str()) + 2};
                      ::setrlimit(RLIMIT_FSIZE, &limit);
                      const int failed = ErrorOf([&] { AppendSection(path.c_str(), Name, 9, Payload); }) != "";
                      const rlimit none{3, limit.rlim_max};
                      ::setrlimit(RLIMIT_FSIZE, &none);
                      return failed + (ErrorOf([&] { m_handler.CreateTDFFile(m_path); }) != "");
                  }),
                  2);
        EXPECT_EQ(ReadWhole(path), Reference("full.tdf"));
    }
}

TEST_F(SectionAppenderTest, RefusesWhatWouldPassFourGigabytes) {
    const std::uint64_t needed = EncodeSectionStart(0, Name, 9).size() + Payload.size();
    for (const std::uint64_t room : {std::uint64_t{8}, needed - 1, needed}) {
        const std::string refusal = room < needed ? "Section header offset to save data is not valid." : "";
        Copy("full.tdf");
        std::filesystem::resize_file(m_file, MaxFileSize - room);
        EXPECT_EQ(ErrorOf([&] { AppendSection(m_path, Name, 9, Payload); }), refusal);
        EXPECT_EQ(std::filesystem::file_size(m_file), MaxFileSize - (room < needed ? room : 0));
        std::filesystem::resize_file(m_file, MaxFileSize - room);
        EXPECT_EQ(ErrorOf([&] { Save(Name, 9, Payload); }), refusal);
    }
}

TEST_F(SectionAppenderTest, LosesNothingOfTwoWritersAtOnce) {
    Copy("empty.tdf");
    const auto write = [&](const char* name) {
        for (unsigned i = 0; i < 60; ++i) {
            AppendSection(m_path, name, i, std::string(i * 100, 'x'));
        }
        return 0;
    };
    const pid_t child = stmdcm_test::StartChild([&] { return write("child"); });
    write("parent");
    ASSERT_EQ(stmdcm_test::WaitForChild(child), 0);
    for (unsigned i = 1; i < 60; ++i) {
        EXPECT_EQ(ReadSection(m_path, "child", i).size() + ReadSection(m_path, "parent", i).size(), i * 200);
    }
}

TEST_F(SectionAppenderTest, GoesOnWithoutALockThatIsNotLetGo) {
    Copy("full.tdf");
    const ZU_WEP::PosixFile other = ZU_WEP::PosixFile::Open(m_path, O_RDONLY);
    unsigned version = 0;
    for (const int held : {LOCK_EX, LOCK_SH}) {
        ASSERT_EQ(::flock(other.Descriptor(), held), 0);
        ZU_WEP::LockPatience patience{std::chrono::milliseconds(50)};
        for (int section = 0; section < 2; ++section) {  // one save: the second does not wait again
            AppendSection(m_path, "NEW", ++version, Payload, patience);
            EXPECT_TRUE(patience.hasRunOut && patience.left.count() == 0);
            EXPECT_EQ(ReadSection(m_path, "NEW", version), Payload);
        }
    }
    ZU_WEP::LockPatience patience;
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        ::flock(other.Descriptor(), LOCK_UN);
    });
    AppendSection(m_path, "NEW", ++version, Payload, patience);
    release.join();
    EXPECT_FALSE(patience.hasRunOut);
    patience.left = patience.left.zero();
    AppendSection(m_path, "NEW", ++version, Payload, patience);  // one that is free is had at once
    EXPECT_FALSE(patience.hasRunOut);
}

TEST_F(SectionAppenderTest, AFailureCutsOffNothingOfAnother) {
    Prepare("full.tdf");
    WriteWhole(m_file, m_before);
    const auto run = stmdcm_test::FailAtSyscall(
        1, EIO, {SYS_fdatasync}, [&] { return Append(); },
        [&] { std::ofstream(m_file, std::ios::binary | std::ios::app) << "theirs"; });
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(ReadWhole(m_file), m_after + "theirs");
}

}  // namespace
}  // namespace Zu::Wep::Trace
