#include "source_utilities/uDll.h"

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
    EXPECT_STREQ(library.GetPath(), "libm.so.6");
    EXPECT_EQ(library.GetMode(), 2);
    EXPECT_EQ(library.GetSymbolAddress("no such symbol"), nullptr);
    const std::string error = library.GetError();
    EXPECT_NE(error.find("no such symbol"), error.npos);
    EXPECT_NE(library.GetSymbolAddress("cos"), nullptr);
    std::string module;
    EXPECT_EQ(library.GetModulePath(module), std::filesystem::read_symlink("/proc/self/exe").string());
    EXPECT_TRUE(library.Unload());
    EXPECT_FALSE(library.Unload());
    EXPECT_EQ(library.GetModulePath(module = "x"), std::string("x"));
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
    EXPECT_NE(std::string(library.GetError()).find("libmissing.so"), std::string::npos);
    std::string log = testing::internal::GetCapturedStdout();
    const std::string trace = "  F    source_utilities/uDll #191  FindAndLoad(...)\n";
    std::size_t at = 0;
    for (const std::string& expected :
         {trace, trace, std::string("| uDll:  request to load \"missing\" in mode -1\n"),
          std::string("| uDll:  GetPlatformName returned \"libmissing.so\"\n"),
          "| uDll:  Working Directory is: \"" + m_home.string() + "\"\n",
          std::string("| uDll:  LD_LIBRARY_PATH=/some/where\n"), std::string("| uDll: libmissing.so: ")}) {
        at = log.find(expected, at);
        ASSERT_NE(at, log.npos) << expected << log;
        at += expected.size();
    }
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
    std::string out = "kept";
    EXPECT_STREQ(uDll::GetPlatformName(out, nullptr), "kept");
    EXPECT_STREQ(uDll::GetUniversalName(out, nullptr), "kept");
}

}  // namespace
}  // namespace ZU_WEP
