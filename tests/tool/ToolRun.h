#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/ScratchDir.h"

namespace stmdcm {

/// A user's machine: a home and a temporary directory, both empty, and an environment that would lead into the home.
class ToolRun : public testing::Test {
  public:
    struct Result {
        int status;
        std::string out;
        std::string error;
    };

  protected:
    ToolRun() {
        std::filesystem::create_directory(Home());
        std::filesystem::create_directory(Temporary());
    }

    std::filesystem::path Home() const { return m_root / "home"; }
    std::filesystem::path Temporary() const { return m_root / "tmp"; }

    /// Runs the tool with arguments as a shell takes them.
    Result Run(const std::string& arguments) const { return Shell(STMDCM_TOOL " " + arguments); }

    /// Runs another program on that machine.
    Result Shell(const std::string& line) const {
        const std::string home = Home().string();
        const std::string command =
            "HOME=" + home + " TMPDIR=" + Temporary().string() + " ZU_TRACE_LOGGING=6 ZU_TRACE_LOGGING_DIR=" + home +
            " ZU_TRACE_SETTINGS_DIR=" + home + " " + line + " >" + (m_root / "out") + " 2>" + (m_root / "error");
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, stmdcm_test::ReadWhole(m_root / "out"),
                stmdcm_test::ReadWhole(m_root / "error")};
    }

    /// But for so many files of the test's own.
    void ExpectNothingLeft(std::ptrdiff_t own = 0) const {
        EXPECT_TRUE(std::filesystem::is_empty(Home()));
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Temporary()), {}), own);
    }

  private:
    stmdcm_test::ScratchDir m_root;
};

}  // namespace stmdcm
