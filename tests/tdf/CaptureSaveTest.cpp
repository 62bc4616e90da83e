#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <set>
#include <thread>

#include "tests/support/DiskRecording.h"
#include "tests/tdf/CaptureTest.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"
#include "trace/format/UnfinishedSection.h"
#include "trace/tdf/TDFError.h"

namespace Zu::Wep::Trace {
namespace {

const char* const Name = "STMDECODERINFO";
const std::string Payload(5000, 'p');

const std::vector<long> FileCalls{SYS_openat,    SYS_read,    SYS_pread64,   SYS_newfstatat, SYS_fstat, SYS_lseek,
                                  SYS_fallocate, SYS_pwritev, SYS_fdatasync, SYS_ftruncate,  SYS_close};

/// A list of object files, as a save has it: only that is what an interrupted one can be completed with.
std::string List(int entries) {
    std::string list;
    for (int i = 0; i < entries; ++i) {
        AppendObjectFileEntry(list, {"core" + std::to_string(i), "/opt/images/app.out", 1'700'000'000 + i});
    }
    return list;
}

struct CaptureSaveTest : CaptureTest {
    std::string m_common = List(1), m_settings = "settings";

    /// 0 when the two sections were saved, 1 when that failed.
    int Save() {
        const auto work = [&] {
            CaptureSave save(m_file);
            save.PrepareForHost();
            TDFError::ThrowUnless(save.Open() == SaveTarget::Capture, "no capture");
            save.Append({{kCommonSectionName, 1, m_common}, {kStmSectionName, 1, m_settings}});
        };
        return ErrorOf(work).empty() ? 0 : 1;
    }
    using CaptureTest::Save;
    /// What a host gets: nothing unless it gets all.
    std::string Loaded() {
        std::string loaded;
        const std::string error = ErrorOf([&] {
            OpenCapture capture(m_file, {kCommonSection, kStmSection});
            loaded = capture.Read(kCommonSection) + "|" + capture.Read(kStmSection);
        });
        return error.empty() ? loaded : "";
    }
    static std::string Section(std::string_view name, const std::string& payload, std::uint32_t lie = 0) {
        return EncodeSectionStart(static_cast<std::uint32_t>(12 + name.size() + payload.size() + lie), name, 1) +
               payload;
    }
    /// Captures of which the last part is whole, torn, lost, or of an interrupted save.
    static std::vector<std::string> Captures() {
        const std::string bare = "TDF2" + Section("DEVID", "a=1\n");
        const std::string list = List(2);
        std::vector<std::string> all{Reference("full.tdf"), bare};
        for (const std::string& last :
             {std::string(7, '\0'), std::string(9000, '\0'), Section("TRACE0", "torn", 700), std::string("\3"),
              std::string("\0\2", 2), Section("TRACE0", "torn", 9).substr(0, 14),
              Section(kCommonSectionName, "torn", 0x7000000), Section(kCommonSectionName, "", 3),
              Section(kUnfinishedName, "torn", 5), Section(kUnfinishedName, list) + Section(kStmSectionName, "old"),
              Section("DCMinished", list) + Section(kStmSectionName, "old") + Section("HOST", "behind"),
              std::string(600, '\0') + Section(kStmSectionName, "back of a save")}) {
            all.push_back(bare + last);
        }
        return all;
    }
    /// After whatever has stopped a save: as before or as after, and the next save is whole and found.
    void ExpectBeforeOrAfter(const std::string& before, const std::string& after, bool isSaved) {
        const std::string left = ReadWhole(m_file), loaded = Loaded();
        ASSERT_TRUE(loaded == after || (!isSaved && loaded == before)) << loaded;
        ASSERT_EQ(Save(), 0);
        ASSERT_EQ(Loaded(), after);
        AppendSection(m_file, "NEXT", 1, "next");
        ASSERT_EQ(ReadSection(m_path, "NEXT", 1), "next");
        ASSERT_LT(ReadWhole(m_file).size(), left.size() + 2000 + 2 * m_settings.size());
    }
};

TEST_F(CaptureSaveTest, IsAllOrNothingWhateverStopsIt) {
    int number = 0;
    for (const std::string& before : Captures()) {
        SCOPED_TRACE(testing::Message() << "capture " << number++);
        WriteWhole(m_file, before);
        const std::string old = Loaded();
        ASSERT_EQ(Save(), 0);
        const std::string saved = Loaded();
        ASSERT_FALSE(saved.empty());
        const auto work = [&] { return Save(); };
        const auto stop = [&](const auto& how) {
            WriteWhole(m_file, before);
            const stmdcm_test::ChildRun run = how();
            ExpectBeforeOrAfter(old, saved, run.exitStatus == 0);
            return run.reached && !HasFatalFailure();
        };
        constexpr unsigned kStep =
            stmdcm_test::kIsSanitized ? 9 : 1;  // a child of a sanitized program takes long to make
        for (unsigned n = 1; stop([&] { return stmdcm_test::KillAtSyscall(n, work); }); n += kStep) {
        }
        for (const int error : {ENOSPC, EIO, EINTR, EMFILE}) {
            SCOPED_TRACE(testing::Message() << "error " << error);
            for (unsigned n = 1; stop([&] { return stmdcm_test::FailAtSyscall(n, error, FileCalls, work); });
                 n += kStep) {
            }
        }
        for (std::size_t bytes = 0; bytes < 60; bytes += kStep) {
            stop([&] {
                stmdcm_test::KillAfterShortWrite(bytes, work);
                return stmdcm_test::ChildRun{};
            });
        }
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST_F(CaptureSaveTest, AnInterruptedSaveComesInForceOnlyIfItWasWhole) {
    const std::string bare = "TDF2" + Section("DEVID", "a=1\n"), stm = Section(kStmSectionName, "old");
    const std::string cut = List(2).substr(0, 40);
    const std::pair<std::string, bool> cases[] = {
        {Section(kUnfinishedName, List(2)) + stm, true},
        {Section(kUnfinishedName, List(2) + stm) + stm, false},  // killed behind its first write
        {Section(kUnfinishedName, List(2) + Section(kStmSectionName, "in part").substr(0, 30)) + stm, false},
        {Section(kUnfinishedName, cut) + stm, false},
    };
    for (const auto& [last, isWhole] : cases) {
        WriteWhole(m_file, bare + last);
        ASSERT_EQ(Save(), 0);
        OpenCapture capture(m_file, {kCommonSection});
        EXPECT_EQ(capture.Read(kCommonSection) != m_common, isWhole) << last;  // the first of the name is read
    }
    WriteWhole(m_file, bare + Section(kUnfinishedName, List(1), 50));  // cut off between two entries
    ASSERT_EQ(Save(), 0);
    EXPECT_EQ(Loaded(), m_common + "|" + m_settings);
    CaptureTest::Save(kStmSectionName, 1, "more");
    ASSERT_EQ(Save(), 0);
    EXPECT_EQ(Loaded(), m_common + "|" + m_settings);
}

TEST_F(CaptureSaveTest, SurvivesALossOfPower) {
    m_common = List(20);
    m_settings = std::string(1500, 's');
    std::mt19937 random(1);
    for (std::size_t offset = 512 - 14; offset < 514; ++offset) {  // of the save, at and around a sector's end
        const std::string before = "TDF2" + Section("DEVID", std::string(offset - 4 - 17, 'x'));
        WriteWhole(m_file, before);
        const stmdcm_test::DiskRecording disk([&] { return Save(); });
        ASSERT_EQ(disk.ExitStatus(), 0);
        const std::string saved = Loaded();
        for (int subset = 0; subset < 40; ++subset) {
            WriteWhole(m_file, disk.After(random() % (disk.Writes() + 1), before, random));
            ExpectBeforeOrAfter("", saved, false);
            ASSERT_FALSE(HasFatalFailure()) << "subset " << subset << " of a save at " << offset;
        }
    }
}

TEST_F(CaptureSaveTest, GivesTheBytesOfTheTwoStepProtocol) {
    Copy("empty.tdf");
    EXPECT_EQ(Save(), 0);
    const std::string saved = ReadWhole(m_file);
    Copy("empty.tdf");
    CaptureTest::Save(kCommonSectionName, 1, m_common);
    CaptureTest::Save(kStmSectionName, 1, m_settings);
    EXPECT_EQ(saved, ReadWhole(m_file));
    Copy("empty.tdf");
    m_settings.resize(kMaxSectionLength - 30);  // with the other it would be more than a search passes
    EXPECT_EQ(Save(), 0);
    EXPECT_EQ(OpenCapture(m_file).PayloadLength(kStmSection), m_settings.size());
}

TEST_F(CaptureSaveTest, ChangesNoForeignByteAndMakesNothingLong) {
    for (const std::string& before : Captures()) {
        WriteWhole(m_file, before);
        ASSERT_EQ(Save(), 0);
        const std::string after = ReadWhole(m_file);
        EXPECT_LT(after.size(), before.size() + 1000);
        EXPECT_EQ(after.substr(0, 22), before.substr(0, 22));
        EXPECT_EQ(after.find("HOST") != std::string::npos, before.find("HOST") != std::string::npos);
    }
}

TEST_F(CaptureSaveTest, MeetsAFileSizeLimitAsAnError) {
    for (const char* parent : {"/tmp", "/dev/shm"}) {
        const stmdcm_test::ScratchDir directory(parent);
        const std::string path = directory / "limited.tdf";
        WriteWhole(path, Reference("full.tdf"));
        EXPECT_EQ(stmdcm_test::RunInChild([&] {
                      const rlimit limit{FileSize(path.c_str()) + 2, FileSize(path.c_str()) + 2};
                      ::setrlimit(RLIMIT_FSIZE, &limit);
                      const int failed = ErrorOf([&] { AppendSection(path, Name, 9, Payload); }) != "";
                      const rlimit none{3, limit.rlim_max};
                      ::setrlimit(RLIMIT_FSIZE, &none);
                      return failed + (ErrorOf([&] { m_handler.CreateTDFFile(m_path); }) != "");
                  }),
                  2);
        EXPECT_EQ(ReadWhole(path), Reference("full.tdf"));
    }
}

TEST_F(CaptureSaveTest, RefusesWhatWouldPassFourGigabytes) {
    const std::uint64_t needed = EncodeSectionStart(0, Name, 9).size() + Payload.size();
    const auto fill = [&](std::uint64_t size) {  // with sections that take no room on the disk
        Copy("empty.tdf");
        for (std::uint64_t at = kFirstSectionOffset; at < size;) {
            const auto length = static_cast<std::uint32_t>(std::min<std::uint64_t>(kMaxSectionLength, size - at));
            ZU_WEP::PosixFile::Open(m_path, O_WRONLY).WriteAt(at, {EncodeSectionLength(length)});
            at += length;
        }
        std::filesystem::resize_file(m_file, size);
    };
    for (const std::uint64_t room : {std::uint64_t{8}, needed - 1, needed}) {
        const std::string refusal = room < needed ? "Section header offset to save data is not valid." : "";
        fill(kMaxFileSize - room);
        EXPECT_EQ(ErrorOf([&] { AppendSection(m_path, Name, 9, Payload); }), refusal);
        EXPECT_EQ(std::filesystem::file_size(m_file), kMaxFileSize - (room < needed ? room : 0));
        std::filesystem::resize_file(m_file, kMaxFileSize - room);
        EXPECT_EQ(ErrorOf([&] { Save(Name, 9, Payload); }), refusal);
    }
    for (const std::string_view ours :
         {std::string_view(kCommonSectionName), kUnfinishedName}) {  // torn, it states an end past them
        fill(kMaxFileSize - 1000);
        std::ofstream(m_file, std::ios::binary | std::ios::app) << Section(ours, "torn", 2000);
        EXPECT_EQ(Save(), 0);
        EXPECT_EQ(Loaded(), (ours == kCommonSectionName ? "torn|" : m_common + "|") + m_settings);
    }
}

TEST_F(CaptureSaveTest, TwoWritersAndAReaderAtOnceMixNothing) {
    const std::set<std::string> whole{"AA|AA", "BB|BB"};
    for (int round = 0; round < 150; ++round) {
        Copy("empty.tdf");
        const auto write = [&](const char* both) {
            m_common = m_settings = both;
            return Save();
        };
        const pid_t first = stmdcm_test::StartChild([&] { return write("AA"); });
        const pid_t second = stmdcm_test::StartChild([&] { return write("BB"); });
        std::string loaded;
        for (int reading = 0; loaded.empty() && reading < 100'000; ++reading) {
            loaded = Loaded();
        }
        EXPECT_EQ(stmdcm_test::WaitForChild(first) + stmdcm_test::WaitForChild(second), 0);
        EXPECT_TRUE(whole.contains(loaded)) << loaded;
        EXPECT_EQ(Loaded(), loaded);
        const std::string bytes = ReadWhole(m_file);
        EXPECT_EQ(bytes.size(), Reference("empty.tdf").size() + 2 * (2 * 12 + 10 + 14 + 4));
        EXPECT_TRUE(bytes.find("AA") != bytes.npos && bytes.find("BB") != bytes.npos);
    }
}

TEST_F(CaptureSaveTest, GoesOnWithoutALockThatIsNotLetGo) {
    Copy("full.tdf");
    const ZU_WEP::PosixFile other = ZU_WEP::PosixFile::Open(m_path, O_RDONLY);
    unsigned version = 0;
    const auto append = [&](CaptureSave& save) {
        ASSERT_EQ(save.Open(), SaveTarget::Capture);
        save.Append({{"NEW", ++version, Payload}});
        EXPECT_EQ(ReadSection(m_path, "NEW", version), Payload);
    };
    for (const int held : {LOCK_EX, LOCK_SH}) {
        ASSERT_EQ(::flock(other.Descriptor(), held), 0);
        CaptureSave save(m_file, {std::chrono::milliseconds(50)});
        save.PrepareForHost();
        EXPECT_TRUE(save.Patience().hasRunOut && save.Patience().left.count() == 0);
        append(save);  // does not wait again
    }
    CaptureSave waiting(m_file);
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        ::flock(other.Descriptor(), LOCK_UN);
    });
    append(waiting);
    release.join();
    EXPECT_FALSE(waiting.Patience().hasRunOut);
    CaptureSave impatient(m_file, {std::chrono::nanoseconds(0)});
    append(impatient);  // one that is free is had at once
    EXPECT_FALSE(impatient.Patience().hasRunOut);
}

TEST_F(CaptureSaveTest, AFailureCutsOffNothingOfAnother) {
    for (const long call : {SYS_fallocate, SYS_pwritev, SYS_fdatasync}) {
        for (unsigned n = 1; n < 4; ++n) {
            Copy("full.tdf");
            const auto run = stmdcm_test::FailAtSyscall(
                n, EIO, {call}, [&] { return Save(); },
                [&] { std::ofstream(m_file, std::ios::binary | std::ios::app) << Section("HOST", "theirs"); });
            EXPECT_EQ(run.exitStatus, run.reached ? 1 : 0);
            EXPECT_EQ(ErrorOf([&] { EXPECT_EQ(ReadSection(m_path, "HOST", 1), "theirs"); }).empty(), run.reached);
        }
    }
}

}  // namespace
}  // namespace Zu::Wep::Trace
