#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <map>
#include <set>
#include <thread>

#include "tests/support/SectionList.h"
#include "tests/tdf/CaptureTest.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"
#include "trace/format/UnfinishedSection.h"
#include "trace/tdf/TDFError.h"

namespace Zu::Wep::Trace {
namespace {

const char* const Name = "STMDECODERINFO";
const std::string Payload(5000, 'p');

const std::vector<long> Interruptible{SYS_openat,    SYS_read,    SYS_pread64,   SYS_flock,
                                      SYS_fallocate, SYS_pwritev, SYS_fdatasync, SYS_ftruncate};
const std::vector<long> FileCalls{SYS_openat, SYS_read,      SYS_pread64, SYS_newfstatat, SYS_fstat,     SYS_lseek,
                                  SYS_flock,  SYS_fallocate, SYS_pwritev, SYS_fdatasync,  SYS_ftruncate, SYS_close};

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
    /// Without a wait for the lock.
    void SaveAtOnce(const std::vector<SectionToSave>& sections) {
        CaptureSave save(m_file, {std::chrono::nanoseconds(0)});
        TDFError::ThrowUnless(save.Open() == SaveTarget::Capture, "no capture");
        save.Append(sections);
    }
    /// What a host gets: nothing unless it gets all.
    std::string Loaded() {
        std::string loaded;
        const std::string error = ErrorOf([&] {
            OpenCapture capture(m_file, {kCommonSection, kStmSection});
            loaded = capture.Read(kCommonSection) + "|" + capture.Read(kStmSection);
        });
        return error.empty() ? loaded : "";
    }
    static std::string Section(std::string_view name, const std::string& payload, std::int64_t lie = 0) {
        return stmdcm::MakeSection(std::string(name), 1, payload, lie);
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
              Section("DCMinished", list) + Section(kStmSectionName, "old") + Section("HOST", "behind")}) {
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
    constexpr unsigned kStep = stmdcm_test::kIsSanitized ? 9 : 1;  // a child of a sanitized program takes long to make
    int number = 0;
    for (const std::string& before : Captures()) {
        SCOPED_TRACE(testing::Message() << "capture " << number++);
        const auto prepare = [&] { WriteWhole(m_file, before); };
        const auto work = [&] { return Save(); };
        prepare();
        const std::string old = Loaded();
        ASSERT_EQ(Save(), 0);
        const std::string saved = Loaded(), after = ReadWhole(m_file);
        ASSERT_FALSE(saved.empty());
        for (const int error : {0, ENOSPC, EIO, EMFILE, EINTR}) {
            const auto check = [&](const stmdcm_test::ChildRun& run) {
                EXPECT_TRUE(error != EINTR || ReadWhole(m_file) == after);
                if (number == 1 && run.exitStatus != -1) {  // a chain without anything to mend
                    EXPECT_TRUE(ReadWhole(m_file) == before || ReadWhole(m_file) == after);
                }
                ExpectBeforeOrAfter(old, saved, run.exitStatus == 0);
            };
            const std::vector<long> calls = error == 0       ? std::vector<long>()
                                            : error == EINTR ? Interruptible
                                                             : FileCalls;
            stmdcm_test::StopEverywhere(error, calls, work, kStep, prepare, check);
        }
        // A first write that is cut short by a kill.
        prepare();
        stmdcm_test::StopAtSyscall(2, 0, {SYS_pwritev}, work);
        const std::string first = ReadWhole(m_file);
        const auto place = std::mismatch(before.begin(), before.end(), first.begin(), first.end()).first;
        for (std::size_t at = static_cast<std::size_t>(place - before.begin()), end = at + 60; at < end; at += kStep) {
            WriteWhole(m_file, first.substr(0, at) + before.substr(std::min(at, before.size())));
            ExpectBeforeOrAfter(old, saved, false);
        }
        ASSERT_FALSE(HasFailure());
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

    // Beside a lock that another holds it must not be mixed with the next save, either.
    WriteWhole(m_file, bare + Section(kUnfinishedName, List(2)) + stm);
    const ZU_WEP::PosixFile other = ZU_WEP::PosixFile::Open(m_path, O_RDWR);
    ASSERT_EQ(::flock(other.Descriptor(), LOCK_EX), 0);
    ASSERT_EQ(ErrorOf([&] { SaveAtOnce({{kCommonSectionName, 1, m_common}, {kStmSectionName, 1, m_settings}}); }), "");
    EXPECT_EQ(Loaded(), List(2) + "|old");
}

TEST_F(CaptureSaveTest, OneSectionComesInForceWhole) {
    m_settings.assign(5000, 's');
    const auto prepare = [&] { Copy("empty.tdf"); };
    const auto work = [&] { return ErrorOf([&] { SaveAtOnce({{kStmSectionName, 1, m_settings}}); }) != "" ? 1 : 0; };
    const auto found = [&] {
        std::string text;
        ErrorOf([&] { text = ReadSection(m_path, kStmSectionName, 1); });
        return text;
    };
    const auto check = [&](const stmdcm_test::ChildRun& run) {
        EXPECT_TRUE(found() == m_settings || (run.exitStatus != 0 && found().empty()));
        EXPECT_EQ(work(), 0);
        EXPECT_EQ(found(), m_settings);
    };
    for (const int error : {0, EIO}) {
        stmdcm_test::StopEverywhere(error, {SYS_pwritev, SYS_fdatasync}, work, 1, prepare, check);
    }
}

/// A host appends at the end of the file, and its part and the save are found.
TEST_F(CaptureSaveTest, BridgesZerosOfAnyLengthForTheHost) {
    for (const std::uint64_t zeros :
         {std::uint64_t{3}, std::uint64_t{kMaxSectionLength} + 3, std::uint64_t{400} << 20}) {
        const std::string bare = "TDF2" + Section("DEVID", "a=1\n");
        WriteWhole(m_file, bare);
        std::filesystem::resize_file(m_file, bare.size() + zeros);
        CaptureSave save(m_file);
        save.PrepareForHost();
        CaptureTest::Save("HOST", 1, "host");
        ASSERT_EQ(save.Open(), SaveTarget::Capture);
        save.Append({{kCommonSectionName, 1, m_common}, {kStmSectionName, 1, m_settings}});
        EXPECT_EQ(Loaded(), m_common + "|" + m_settings) << zeros;
        EXPECT_EQ(ReadSection(m_path, "HOST", 1), "host") << zeros;
    }
}

TEST_F(CaptureSaveTest, SavesTwoOneByOneWhereNoSearchWouldPassBoth) {
    m_settings.resize(kMaxSectionLength - 30);
    const auto prepare = [&] { Copy("empty.tdf"); };
    const auto check = [&](const stmdcm_test::ChildRun& run) {
        EXPECT_TRUE(run.reached || !Loaded().empty());
        AppendSection(m_file, "NEXT", 1, "next");
        EXPECT_EQ(ReadSection(m_path, "NEXT", 1), "next");
    };
    stmdcm_test::StopEverywhere(
        0, {SYS_pwritev}, [&] { return Save(); }, 1, prepare, check);
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
    Copy("full.tdf");
    const auto limited = [&](rlim_t size, const std::function<void()>& work) {
        return stmdcm_test::RunInChild([&] {
            const rlimit limit{size, size};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            return int{ErrorOf(work) != ""};
        });
    };
    EXPECT_EQ(limited(FileSize(m_path) + 2, [&] { AppendSection(m_path, Name, 9, Payload); }), 1);
    EXPECT_EQ(ReadWhole(m_file), Reference("full.tdf"));
    EXPECT_EQ(limited(3, [&] { m_handler.CreateTDFFile(m_path); }), 1);
    WriteWhole(m_file, "TDF2" + Section("TRACE0", "torn", 20 << 20));
    EXPECT_EQ(limited(10 << 20, [&] { TDFError::ThrowUnless(Save() == 0, "refused"); }), 1);
}

TEST_F(CaptureSaveTest, RefusesWhatWouldPassFourGigabytes) {
    const std::uint64_t header = EncodeSectionStart(0, Name, 9).size(), needed = header + Payload.size();
    const auto fill = [&](std::uint64_t size) {  // with sections that take no room on the disk
        Copy("empty.tdf");
        for (std::uint64_t at = kFirstSectionOffset; at < size;) {
            const auto length = static_cast<std::uint32_t>(std::min<std::uint64_t>(kMaxSectionLength, size - at));
            ZU_WEP::PosixFile::Open(m_path, O_WRONLY).WriteAt(at, {EncodeSectionLength(length)});
            at += length;
        }
        std::filesystem::resize_file(m_file, size);
    };
    for (const std::uint64_t room : {std::uint64_t{8}, header, needed - 1, needed}) {
        const std::string refusal = room < needed ? "Section header offset to save data is not valid." : "";
        fill(kMaxFileSize - room);
        EXPECT_EQ(ErrorOf([&] { AppendSection(m_path, Name, 9, Payload); }), refusal);
        EXPECT_EQ(ErrorOf([&] { EXPECT_EQ(ReadSection(m_path, Name, 9), Payload); }).empty(), room == needed);
        EXPECT_EQ(std::filesystem::file_size(m_file), kMaxFileSize - (room < needed ? room : 0));
        std::filesystem::resize_file(m_file, kMaxFileSize - room);
        EXPECT_EQ(ErrorOf([&] { Save(Name, 9, Payload); }), refusal);
        const std::uint64_t written = room == needed ? needed : room < header ? 0 : header;
        EXPECT_EQ(std::filesystem::file_size(m_file), kMaxFileSize - room + written);
    }
    for (const std::string_view ours :
         {std::string_view(kCommonSectionName), kUnfinishedName}) {  // torn, it states an end past them
        fill(kMaxFileSize - 1000);
        std::ofstream(m_file, std::ios::binary | std::ios::app) << Section(ours, "torn", 2000);
        EXPECT_EQ(Save(), 0);
        EXPECT_EQ(Loaded(), (ours == kCommonSectionName ? "torn|" : m_common + "|") + m_settings);
    }
}

/// At each system call of the one writer the reader looks, and the other writer starts and has some time for itself.
TEST_F(CaptureSaveTest, TwoWritersAndAReaderAtOnceMixNothing) {
    const auto write = [&](const char* both) {
        return [&, both] {
            m_common = m_settings = both;
            return Save();
        };
    };
    const std::set<std::string> whole{"", "AA|AA", "BB|BB"};
    bool reached = true;
    for (unsigned n = 1; reached; ++n) {
        SCOPED_TRACE(n);
        Copy("empty.tdf");
        pid_t second = 0;
        const auto meanwhile = [&] {
            EXPECT_TRUE(whole.contains(Loaded())) << Loaded();
            second = stmdcm_test::StartChild(write("BB"));
            siginfo_t ended{};
            for (int i = 0; i < 20 && ended.si_pid == 0; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                ::waitid(P_PID, static_cast<id_t>(second), &ended, WEXITED | WNOHANG | WNOWAIT);
            }
            EXPECT_TRUE(whole.contains(Loaded())) << Loaded();
        };
        const auto run = stmdcm_test::StopAtSyscall(n, stmdcm_test::kGoOn, {}, write("AA"), meanwhile);
        reached = run.reached;
        EXPECT_EQ(run.exitStatus, 0);
        EXPECT_EQ(reached ? stmdcm_test::WaitForChild(second) : 0, 0);
        const std::string bytes = ReadWhole(m_file), loaded = Loaded();
        EXPECT_TRUE(!loaded.empty() && whole.contains(loaded)) << loaded;
        EXPECT_EQ(bytes.size(), Reference("empty.tdf").size() + (reached ? 2 : 1) * (2 * 12 + 10 + 14 + 4));
        EXPECT_TRUE(bytes.find("AA") != bytes.npos && (!reached || bytes.find("BB") != bytes.npos));
    }
}

TEST_F(CaptureSaveTest, GoesOnWithoutALockThatIsNotLetGo) {
    Copy("empty.tdf");
    const ZU_WEP::PosixFile other = ZU_WEP::PosixFile::Open(m_path, O_RDONLY);
    unsigned version = 0;
    const auto append = [&](CaptureSave& save) {
        ASSERT_EQ(save.Open(), SaveTarget::Capture);
        save.Append({{"NEW", ++version, Payload}});
        EXPECT_EQ(ReadSection(m_path, "NEW", version), Payload);
    };
    for (const int held : {LOCK_EX, LOCK_SH}) {
        Copy("full.tdf");
        ASSERT_EQ(::flock(other.Descriptor(), held), 0);
        CaptureSave save(m_file, {std::chrono::milliseconds(50)});
        save.PrepareForHost();
        EXPECT_TRUE(save.Patience().hasRunOut && save.Patience().left.count() == 0);
        append(save);  // does not wait again
        const std::string before = ReadWhole(m_file) + std::string(7, '\0');
        WriteWhole(m_file, before);
        ASSERT_EQ(save.Open(), SaveTarget::Capture);
        save.Append({{"NEW", 1, Payload}});
        EXPECT_TRUE(ReadWhole(m_file).starts_with(before)) << "nothing is mended";
    }
    Copy("full.tdf");
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
    std::map<long, unsigned> times;
    for (const long call : {SYS_fallocate, SYS_pwritev, SYS_fdatasync}) {
        for (bool reached = true; reached; times[call] += reached ? 1 : 0) {
            Copy("full.tdf");
            const auto run = stmdcm_test::StopAtSyscall(
                times[call] + 1, EIO, {call}, [&] { return Save(); },
                [&] { std::ofstream(m_file, std::ios::binary | std::ios::app) << Section("HOST", "theirs"); });
            reached = run.reached;
            EXPECT_EQ(run.exitStatus, reached ? 1 : 0);
            EXPECT_EQ(ErrorOf([&] { EXPECT_EQ(ReadSection(m_path, "HOST", 1), "theirs"); }).empty(), reached);
        }
    }
    EXPECT_EQ(times[SYS_pwritev], times[SYS_fdatasync]) << "each write is synced";
}

}  // namespace
}  // namespace Zu::Wep::Trace
