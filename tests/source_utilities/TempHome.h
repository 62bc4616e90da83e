#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// Each test works in an empty directory that is also its HOME.
class TempHome : public testing::Test {
  protected:
    TempHome() {
        std::string name = std::filesystem::temp_directory_path() / "utilities-XXXXXX";
        m_home = mkdtemp(name.data());
        std::filesystem::current_path(m_home);
        setenv("HOME", m_home.c_str(), 1);
    }
    ~TempHome() override {
        std::filesystem::current_path("/");
        std::filesystem::remove_all(m_home);
    }

    static std::string Contents(const std::filesystem::path& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    std::filesystem::path m_home;
};
