#include "source_utilities/ReplaceFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "tests/support/KillAtSyscall.h"
#include "tests/support/ScratchDir.h"

namespace ZU_WEP {
namespace {

using stmdcm_test::ReadWhole;
using stmdcm_test::RunInChild;
using stmdcm_test::WriteWhole;

const std::string Old(7000, 'o');
const std::string New(9000, 'n');

/// A settings file that is written through a link.
struct ReplaceFileTest : ::testing::Test {
    stmdcm_test::ScratchDir m_directory;
    std::string m_path = m_directory / "settings.txt";
    std::string m_link = m_directory / "link";

    void Prepare(bool exists) {
        for (const auto& entry : std::filesystem::directory_iterator(m_directory.Path())) {
            std::filesystem::remove(entry.path());
        }
        std::filesystem::create_symlink("settings.txt", m_link);
        if (exists) {
            WriteWhole(m_path, Old);
        }
    }
    ReplaceResult Replace() { return ReplaceFile(m_link, New); }
    auto FilesInDirectory() { return std::distance(std::filesystem::directory_iterator(m_directory.Path()), {}); }
};

TEST_F(ReplaceFileTest, LeavesOldOrNewContentWhereverItIsKilledOrFails) {
    for (const bool exists : {true, false}) {
        const std::string before = exists ? Old : "";
        const auto work = [&] { return static_cast<int>(Replace()); };
        bool killed = true, failed = true;
        for (unsigned n = 1; killed || failed; ++n) {
            Prepare(exists);
            killed = stmdcm_test::KillAtSyscall(n, work).reached;
            const std::string left = ReadWhole(m_link);
            ASSERT_TRUE(left == New || (killed && left == before)) << "killed at call " << n;
            Prepare(exists);
            const auto run = stmdcm_test::FailAtSyscall(
                n, ENOSPC, {SYS_openat, SYS_pwritev, SYS_fsync, SYS_rename, SYS_fchmod, SYS_close}, work);
            failed = run.reached;
            const std::string content = ReadWhole(m_link);
            ASSERT_TRUE(content == New || (run.exitStatus != 0 && content == before)) << "failed at call " << n;
            ASSERT_LE(FilesInDirectory(), 2) << "a temporary file is left after call " << n;
        }
    }
}

TEST_F(ReplaceFileTest, KeepsModeAndLinkAndMeetsASizeLimit) {
    Prepare(true);
    ::chmod(m_path.c_str(), 0640);
    EXPECT_EQ(Replace(), ReplaceResult::Written);
    EXPECT_EQ(static_cast<unsigned>(std::filesystem::status(m_path).permissions()), 0640u);
    EXPECT_TRUE(std::filesystem::is_symlink(m_link));
    EXPECT_EQ(RunInChild([&] {
                  const rlimit limit{8000, 8000};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  return static_cast<int>(ReplaceFile(m_path, Old + Old));
              }),
              static_cast<int>(ReplaceResult::Failed));
    EXPECT_EQ(ReadWhole(m_path), New);
    EXPECT_EQ(FilesInDirectory(), 2);
}

TEST_F(ReplaceFileTest, WritesInPlaceWhereNothingElseIsAllowed) {
    Prepare(true);
    const auto replaceAsOther = [&](mode_t mode, const std::string& content) {
        ::chmod(m_path.c_str(), mode);
        return static_cast<ReplaceResult>(RunInChild([&] {
            constexpr uid_t Nobody = 65534;
            const bool ready = ::geteuid() != 0 || ::setresuid(Nobody, Nobody, Nobody) == 0;
            return ready ? static_cast<int>(ReplaceFile(m_path, content)) : 99;
        }));
    };
    ::chmod(m_directory.Path().c_str(), 0555);
    EXPECT_EQ(replaceAsOther(0666, "short"), ReplaceResult::Written);
    EXPECT_EQ(replaceAsOther(0444, New), ReplaceResult::CannotOpen);
    EXPECT_EQ(ReadWhole(m_path), "short");
    ::chmod(m_directory.Path().c_str(), 0755);

    const std::string fifo = m_directory / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::fstream reader(fifo);  // both ways, so that no writer waits
    const std::pair<std::string, ReplaceResult> cases[] = {{fifo, ReplaceResult::Written},
                                                           {"/dev/full", ReplaceResult::Failed},
                                                           {m_directory.Path(), ReplaceResult::CannotOpen},
                                                           {m_directory / "none/a.txt", ReplaceResult::CannotOpen},
                                                           {"", ReplaceResult::CannotOpen}};
    for (const auto& [path, result] : cases) {
        EXPECT_EQ(ReplaceFile(path, New), result) << path;
    }
}

}  // namespace
}  // namespace ZU_WEP
