#include "source_utilities/ReplaceFile.h"

#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include "source_utilities/PosixFile.h"
#include "tests/support/FreeDescriptors.h"
#include "tests/support/KillAtSyscall.h"
#include "tests/support/ScratchDir.h"

namespace ZU_WEP {
namespace {

using stmdcm_test::ReadWhole;
using stmdcm_test::RunInChild;
using stmdcm_test::WriteWhole;

const std::string Old(9000, 'o');
const std::string New(7000, 'n');
const std::string Padded = New + std::string(Old.size() - New.size(), '\n');

ReplaceResult Replace(const std::string& path, const std::string& text = New) {
    return ReplaceFile(path, [&text] { return text; });
}

struct stat Status(const std::string& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info;
}

/// A settings file that is written through a link, and one whose path has no room for a longer name beside it.
struct ReplaceFileTest : ::testing::Test {
    stmdcm_test::ScratchDir m_directory{stmdcm_test::MemoryDirectory()};
    std::string m_path = m_directory / "settings.txt";
    std::string m_link = m_directory / "link";
    std::string m_long = m_directory.Path();

    ReplaceFileTest() {
        constexpr std::size_t Length = 4080;
        while (m_long.size() + 4 < Length) {
            m_long += "/" + std::string(std::min<std::size_t>(200, Length - m_long.size() - 3), 'd');
        }
        std::filesystem::create_directories(m_long);
        m_long += "/" + std::string(Length - m_long.size() - 1, 'f');
        std::filesystem::create_symlink("settings.txt", m_link);
        Prepare(true);
    }
    void Prepare(bool exists) {
        for (const std::string& path : {m_path, m_long}) {
            std::filesystem::remove(path);
            if (exists) {
                WriteWhole(path, Old);
            }
        }
    }
    /// The temporary files that are there.
    std::set<std::string> Temporary() {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_directory.Path())) {
            if (entry.path().extension() == ".tmp") {
                names.insert(entry.path().filename());
            }
        }
        return names;
    }
};

TEST_F(ReplaceFileTest, LeavesOldOrNewContentWhereverItIsKilledOrFails) {
    const std::vector<long> calls{SYS_openat, SYS_pwritev, SYS_ftruncate, SYS_fsync, SYS_rename, SYS_fchmod, SYS_close};
    for (const auto& [path, exists] : {std::pair(m_link, true), {m_link, false}, {m_long, true}, {m_long, false}}) {
        const bool isInPlace = path == m_long;
        const std::string before = exists ? Old : "", between = exists && isInPlace ? Padded : before;
        ino_t inode = 0;
        const auto prepare = [&, &exists = exists, &path = path] {
            Prepare(exists);
            inode = Status(path).st_ino;
        };
        const auto check = [&, &exists = exists, &path = path](const stmdcm_test::ChildRun& run) {
            const std::string left = ReadWhole(path);
            const bool isStopped = run.exitStatus == -1 || run.exitStatus == static_cast<int>(ReplaceResult::Failed);
            EXPECT_TRUE(left == New || (isStopped && (left == before || left == between)));
            EXPECT_TRUE(Temporary().empty() || run.exitStatus == -1);
            EXPECT_TRUE(!exists || left != New || (Status(path).st_ino == inode) == isInPlace);
            EXPECT_EQ(Replace(path), ReplaceResult::Written);
            EXPECT_TRUE(Temporary().empty());
        };
        const auto work = [&path = path] { return static_cast<int>(Replace(path)); };
        stmdcm_test::StopEverywhere(0, {}, work, 1, prepare, check);
        stmdcm_test::StopEverywhere(ENOSPC, calls, work, 1, prepare, check);
        unsigned told = 0;  // in time
        stmdcm_test::StopEverywhere(EIO, {SYS_close}, work, 1, prepare, [&, &path = path](const auto& run) {
            told += run.exitStatus == static_cast<int>(ReplaceResult::Failed) && ReadWhole(path) == before ? 1U : 0U;
        });
        EXPECT_EQ(told, isInPlace ? 0U : 1U);
        for (unsigned sync = isInPlace ? 2 : 1; sync < 3; ++sync) {  // of the file, and of its folder
            EXPECT_EQ(stmdcm_test::StopAtSyscall(isInPlace ? 1 : sync, EIO, {SYS_fsync}, work).exitStatus,
                      static_cast<int>(ReplaceResult::Failed));
        }
    }
}

TEST_F(ReplaceFileTest, TakesNoNameThatIsThereAndRemovesWhatADeadProcessLeft) {
    std::string mine;
    ReplaceFile(m_path, [&] { return mine = *Temporary().begin(); });
    const std::size_t number = mine.rfind('-') + 1;
    const std::string next = mine.substr(0, number) + std::to_string(std::stoi(mine.substr(number)) + 1) + ".tmp";
    const std::string locked = ".stmdcm-2147483647-1.tmp", victim = m_directory / "victim";
    const std::set<std::string> kept{
        next, locked, ".stmdcm-2147483647-2.tmp", ".stmdcm-1-1.tmp", ".stmdcm-2147483647-my notes.tmp", "a.tmp"};
    WriteWhole(m_directory / ".stmdcm-2147483647-my notes.tmp", "no temporary file");
    WriteWhole(m_directory / ".stmdcm-1-1.tmp", "of a process that lives");
    const auto lock = PosixFile::Open((m_directory / locked).c_str(), O_RDWR | O_CREAT);
    ASSERT_EQ(::flock(lock.Descriptor(), LOCK_EX), 0);
    WriteWhole(victim, "mine");
    for (const std::string& name : kept) {
        std::error_code isThere;
        std::filesystem::create_symlink(victim, m_directory / name, isThere);
    }
    WriteWhole(m_directory / ".stmdcm-2147483647-3.tmp", "left");
    EXPECT_EQ(Replace(m_path), ReplaceResult::Written);
    EXPECT_EQ(ReadWhole(victim), "mine");
    EXPECT_EQ(Temporary(), kept);
}

TEST_F(ReplaceFileTest, AsksForTheTextWhenAFileIsOpenForIt) {
    for (const std::string& path : {m_link, m_long}) {
        EXPECT_THROW(ReplaceFile(path, []() -> std::string { throw std::bad_alloc(); }), std::bad_alloc);
        EXPECT_EQ(ReadWhole(path), Old);
        EXPECT_TRUE(Temporary().empty());
        for (const int descriptors : {0, 1}) {
            const auto work = [&, &file = path] {
                stmdcm_test::LeaveDescriptors(descriptors);
                bool asked = false;
                const auto result = ReplaceFile(file, [&asked] {
                    asked = ::open("/dev/null", O_RDONLY) < 0;  // the file has the last descriptor
                    return New;
                });
                return static_cast<int>(result) * 2 + int{asked};
            };
            const auto expected = descriptors == 0 ? ReplaceResult::CannotOpen : ReplaceResult::Written;
            EXPECT_EQ(RunInChild(work), static_cast<int>(expected) * 2 + descriptors) << path;
            EXPECT_EQ(ReadWhole(path), descriptors == 0 ? Old : New);
        }
    }
}

TEST_F(ReplaceFileTest, KeepsOwnerModeAndLinkAndMeetsASizeLimit) {
    const uid_t owner = ::geteuid() == 0 ? 65534 : ::geteuid();
    ASSERT_EQ(::chown(m_path.c_str(), owner, static_cast<gid_t>(-1)) + ::chmod(m_path.c_str(), 04640), 0);
    const auto replaceLimited = [&](const std::string& text) {
        return static_cast<ReplaceResult>(RunInChild([&] {
            const rlimit limit{New.size(), New.size()};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            return static_cast<int>(Replace(m_link, text));
        }));
    };
    EXPECT_EQ(replaceLimited(New + "n"), ReplaceResult::Failed);
    EXPECT_EQ(ReadWhole(m_path), Old);
    EXPECT_EQ(replaceLimited(New), ReplaceResult::Written);
    EXPECT_EQ(ReadWhole(m_path), New);
    EXPECT_EQ(Status(m_path).st_mode & 07777U, 04640U);
    EXPECT_EQ(Status(m_path).st_uid, owner);
    EXPECT_TRUE(std::filesystem::is_symlink(m_link));
    EXPECT_TRUE(Temporary().empty());
}

TEST_F(ReplaceFileTest, WritesInPlaceWhereNothingElseIsAllowed) {
    const auto replaceAsOther = [&](mode_t mode, const std::string& content) {
        ::chmod(m_path.c_str(), mode);
        return static_cast<ReplaceResult>(RunInChild([&] {
            constexpr uid_t Nobody = 65534;
            const bool ready = ::geteuid() != 0 || ::setresuid(Nobody, Nobody, Nobody) == 0;
            return ready ? static_cast<int>(Replace(m_path, content)) : 99;
        }));
    };
    ::chmod(m_directory.Path().c_str(), 0555);
    EXPECT_EQ(replaceAsOther(0666, "short"), ReplaceResult::Written);
    EXPECT_EQ(replaceAsOther(0444, New), ReplaceResult::CannotOpen);
    EXPECT_EQ(ReadWhole(m_path), "short");
    ::chmod(m_directory.Path().c_str(), 0777);  // but its owner can't be kept
    const ino_t inode = Status(m_path).st_ino;
    EXPECT_EQ(replaceAsOther(0666, New), ReplaceResult::Written);
    EXPECT_TRUE(Status(m_path).st_ino == inode || ::geteuid() != 0);

    const std::string fifo = m_directory / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(Replace(fifo), ReplaceResult::CannotOpen);  // nobody reads it
    std::fstream reader(fifo);                            // both ways, so that no writer waits
    const PosixFile nameless = PosixFile::Open(m_path.c_str(), O_RDWR);
    std::filesystem::remove(m_path);
    const std::string link = "/proc/self/fd/" + std::to_string(nameless.Descriptor());
    const std::pair<std::string, ReplaceResult> cases[] = {{fifo, ReplaceResult::Written},
                                                           {link, ReplaceResult::Written},
                                                           {"/dev/full", ReplaceResult::Failed},
                                                           {m_directory.Path(), ReplaceResult::CannotOpen},
                                                           {m_directory / "none/a.txt", ReplaceResult::CannotOpen},
                                                           {"", ReplaceResult::CannotOpen}};
    for (const auto& [path, result] : cases) {
        EXPECT_EQ(Replace(path), result) << path;
    }
    EXPECT_EQ(ReadWhole(link), New);
    const auto leave = [&reader] {
        reader.close();
        return New;
    };
    EXPECT_EQ(ReplaceFile(fifo, leave), ReplaceResult::Failed);
}

}  // namespace
}  // namespace ZU_WEP
