#include "source_utilities/uDll.h"

#include <regex>
#include <tuple>

#include "source_utilities/uLogSystem.h"
#include "tests/source_utilities/TempHome.h"

namespace ZU_WEP {
namespace {

using uDllTest = TempHome;

TEST_F(uDllTest, LoadsOneLibraryAtATime) {
    uDll library(nullptr, -1);
    EXPECT_EQ(library.GetMode(), 1);
    EXPECT_FALSE(library.Load(nullptr, -1));
    EXPECT_EQ(library.GetSymbolAddress("cos"), nullptr);
    EXPECT_TRUE(library.FindAndLoad("libm.so.6", 2));
    EXPECT_TRUE(library.Load("elsewhere.so", 1));
    EXPECT_EQ(library.GetPath() + std::to_string(library.GetMode()), "libm.so.62");
    EXPECT_EQ(library.GetSymbolAddress("no such symbol"), nullptr);
    EXPECT_STRNE(library.GetError(), "");
    EXPECT_NE(library.GetSymbolAddress("cos"), nullptr);
    std::string module;
    EXPECT_EQ(library.GetModulePath(module), std::filesystem::read_symlink("/proc/self/exe").string());
    EXPECT_TRUE(library.Unload());
    EXPECT_FALSE(library.Unload());
    EXPECT_EQ(library.GetSymbolAddress("cos"), nullptr);
    EXPECT_STREQ(library.GetError(), "");
}

TEST_F(uDllTest, LogsWhatItTried) {
    setenv("LEVEL", "6", 1);
    setenv("LD_LIBRARY_PATH", "/some/where", 1);
    testing::internal::CaptureStdout();
    uLogSystem::GetLogSystem()->InitLog("log.txt", "LEVEL", nullptr, false);
    uDll library("", -1);
    EXPECT_FALSE(library.FindAndLoad(nullptr, -1));
    EXPECT_FALSE(library.FindAndLoad("missing", -1));
    const std::string log = testing::internal::GetCapturedStdout();
    const std::string trace = "  F    source_utilities/uDll #191  FindAndLoad(...)\n";
    const std::string expected = trace + trace + R"(T| uDll:  request to load "missing" in mode -1
T| uDll:  GetPlatformName returned "libmissing.so"
T| uDll:  Working Directory is: ")" +
                                 m_home.string() + R"("
T| uDll:  LD_LIBRARY_PATH=/some/where
T| uDll: libmissing.so: )";
    const std::string timeless = std::regex_replace(log, std::regex("M     [0-9:]{12} "), "T");
    EXPECT_NE(timeless.find(expected), log.npos) << log;
    delete uLogSystem::m_pSystem;
    uLogSystem::m_pSystem = nullptr;
    unsetenv("LD_LIBRARY_PATH");
}

TEST_F(uDllTest, MapsNames) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"foo", "libfoo.so", "foo"},   {"foo.so", "foo.so", ""}, {"libvorn.so", "libvorn.so", "vorn"},
        {".so", "lib.so.so", ".so"},   {"a.so", "a.so", "o"},    {"libvorn.so.1", "libvorn.so.1", "vorn.s"},
        {"libx.sol", "libx.sol", "x."}};
    for (const auto& [name, platformName, universalName] : cases) {
        std::string platform = "+";
        std::string universal = "+";
        EXPECT_EQ(uDll::GetPlatformName(platform, name), std::string("+") + platformName);
        EXPECT_EQ(uDll::GetUniversalName(universal, name), std::string("+") + universalName);
    }
}

}  // namespace
}  // namespace ZU_WEP
