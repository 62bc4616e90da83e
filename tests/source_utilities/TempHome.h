#pragma once

#include <gmock/gmock.h>

#include "tests/support/ScratchDir.h"

/// Each test works in an empty directory that is also its HOME.
class TempHome : public testing::Test {
  protected:
    TempHome() {
        std::filesystem::current_path(m_home);
        setenv("HOME", m_home.c_str(), 1);
    }
    ~TempHome() override { std::filesystem::current_path("/"); }

    stmdcm_test::ScratchDir m_directory;
    const std::filesystem::path m_home = m_directory.Path();
};
