#include "source_utilities/ReplaceFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

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

ino_t Inode(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? info.st_ino : 0;
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
    }
    void Prepare(bool exists) {
        for (const std::string& path : {m_path, m_long}) {
            std::filesystem::remove(path);
        }
        if (exists) {
            WriteWhole(m_path, Old);
            WriteWhole(m_long, Old);
        }
    }
    /// One that was left behind, or nothing.
    std::string Temporary() {
        for (const auto& entry : std::filesystem::directory_iterator(m_directory.Path())) {
            if (entry.path().extension() == ".tmp") {
                return entry.path();
            }
        }
        return "";
    }
};

TEST_F(ReplaceFileTest, LeavesOldOrNewContentWhereverItIsKilledOrFails) {
    using Case = std::pair<std::string, bool>;
    for (const auto& [path, exists] :
         {Case(m_link, true), Case(m_link, false), Case(m_long, true), Case(m_long, false)}) {
        const std::string before = exists ? Old : "";
        const std::string between = exists && path == m_long ? Padded : before;
        const auto work = [&path = path] { return static_cast<int>(Replace(path)); };
        bool killed = true, failed = true;
        for (unsigned n = 1; killed || failed; ++n) {
            Prepare(exists);
            killed = stmdcm_test::KillAtSyscall(n, work).reached;
            const std::string left = ReadWhole(path);
            ASSERT_TRUE(left == New || (killed && (left == before || left == between))) << "killed at call " << n;
            ASSERT_EQ(Replace(path), ReplaceResult::Written);
            ASSERT_EQ(Temporary(), "") << "left at call " << n;
            Prepare(exists);
            const ino_t inode = Inode(path);
            const auto run = stmdcm_test::FailAtSyscall(
                n, ENOSPC, {SYS_openat, SYS_pwritev, SYS_ftruncate, SYS_fsync, SYS_rename, SYS_fchmod, SYS_close},
                work);
            failed = run.reached;
            const std::string content = ReadWhole(path);
            const bool isTold = run.exitStatus == static_cast<int>(ReplaceResult::Failed);
            ASSERT_TRUE(content == New || (isTold && (content == before || content == between)))
                << "failed at call " << n;
            ASSERT_TRUE(!exists || content != New || (Inode(path) == inode) == (path == m_long)) << "call " << n;
            ASSERT_EQ(Temporary(), "") << "after call " << n;
        }
    }
}

TEST_F(ReplaceFileTest, AsksForTheTextWhenAFileIsOpenForIt) {
    Prepare(true);
    for (const std::string& path : {m_link, m_long}) {
        EXPECT_THROW(ReplaceFile(path, []() -> std::string { throw std::bad_alloc(); }), std::bad_alloc);
        EXPECT_EQ(ReadWhole(path), Old);
        EXPECT_EQ(Temporary(), "");
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
            const ino_t inode = Inode(path);
            const auto expected = descriptors == 0 ? ReplaceResult::CannotOpen : ReplaceResult::Written;
            EXPECT_EQ(RunInChild(work), static_cast<int>(expected) * 2 + descriptors) << path;
            EXPECT_EQ(ReadWhole(path), descriptors == 0 ? Old : New);
            EXPECT_EQ(Inode(path) == inode, descriptors == 0 || path == m_long);
        }
    }
}

TEST_F(ReplaceFileTest, KeepsModeAndLinkAndMeetsASizeLimit) {
    Prepare(true);
    ::chmod(m_path.c_str(), 0640);
    EXPECT_EQ(Replace(m_link), ReplaceResult::Written);
    EXPECT_EQ(static_cast<unsigned>(std::filesystem::status(m_path).permissions()), 0640u);
    EXPECT_TRUE(std::filesystem::is_symlink(m_link));
    EXPECT_EQ(RunInChild([&] {
                  const rlimit limit{8000, 8000};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  return static_cast<int>(Replace(m_path, Old + Old));
              }),
              static_cast<int>(ReplaceResult::Failed));
    EXPECT_EQ(ReadWhole(m_path), New);
    EXPECT_EQ(Temporary(), "");
}

TEST_F(ReplaceFileTest, WritesInPlaceWhereNothingElseIsAllowed) {
    Prepare(true);
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
    const ino_t inode = Inode(m_path);
    EXPECT_EQ(replaceAsOther(0666, New), ReplaceResult::Written);
    EXPECT_TRUE(Inode(m_path) == inode || ::geteuid() != 0);

    const std::string fifo = m_directory / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(Replace(fifo), ReplaceResult::CannotOpen);  // nobody reads it
    std::fstream reader(fifo);                            // both ways, so that no writer waits
    const std::pair<std::string, ReplaceResult> cases[] = {{fifo, ReplaceResult::Written},
                                                           {"/dev/full", ReplaceResult::Failed},
                                                           {m_directory.Path(), ReplaceResult::CannotOpen},
                                                           {m_directory / "none/a.txt", ReplaceResult::CannotOpen},
                                                           {"", ReplaceResult::CannotOpen}};
    for (const auto& [path, result] : cases) {
        EXPECT_EQ(Replace(path), result) << path;
    }
    const auto leave = [&reader] {
        reader.close();
        return New;
    };
    EXPECT_EQ(ReplaceFile(fifo, leave), ReplaceResult::Failed);

    ::chmod(m_path.c_str(), 0644);
    const PosixFile nameless = PosixFile::Open(m_path.c_str(), O_RDWR);
    std::filesystem::remove(m_path);
    const std::string link = "/proc/self/fd/" + std::to_string(nameless.Descriptor());
    EXPECT_EQ(Replace(link), ReplaceResult::Written);
    EXPECT_EQ(ReadWhole(link), New);
}

}  // namespace
}  // namespace ZU_WEP
