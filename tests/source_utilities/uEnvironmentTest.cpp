#include "source_utilities/uEnvironment.h"

#include <tuple>

#include "source_utilities/source_utilities_error.h"
#include "tests/source_utilities/TempHome.h"

namespace ZU_WEP {
namespace {

using uEnvironmentTest = TempHome;

TEST_F(uEnvironmentTest, TraceDirectoriesLieInHomeAndAreCreated) {
    setenv("HOME", (m_home.string() + "/").c_str(), 1);
    const std::pair<const char* (*)(std::string&), const char*> cases[] = {
        {uEnvironment::GetTraceLoggingDirectory, "/.ZU-trace"},
        {uEnvironment::GetTraceUserSettingsDirectory, "/.ZU-trace/settings"},
        {uEnvironment::GetTraceTemporaryDataDirectory, "/.ZU-trace/data"}};
    std::string dir = "old";
    for (const auto& [get, path] : cases) {
        EXPECT_EQ(get(dir), m_home.string() + path);
        EXPECT_TRUE(std::filesystem::is_directory(dir));
    }
    setenv("HOME", "", 1);
    dir = "kept";
    for (const auto& [get, path] : cases) EXPECT_THROW(get(dir), source_utilities_error);
    EXPECT_EQ(dir, "kept");
}

TEST_F(uEnvironmentTest, MakesEveryDirectoryOfAPath) {
    EXPECT_EQ(uEnvironment::MakeDirectory("x/y/z"), 0);
    EXPECT_TRUE(std::filesystem::is_directory(m_home / "x/y/z"));
    EXPECT_EQ(uEnvironment::MakeDirectory("x/y/z"), -1);
}

TEST_F(uEnvironmentTest, HandlesPaths) {
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {{"", "a\\b", "a/b", ""},
                                                                                    {"/a/b", "c", "/a/b/c", "/a"},
                                                                                    {"/a", "/c", "/a/c", ""},
                                                                                    {"a/b/", "c", "a/b/c", "a/b"},
                                                                                    {"\\\\h\\\\\\d", "", "/h/d/", ""}};
    for (const auto& [head, tail, joined, before] : cases) {
        std::string path = head;
        std::string parent = "old";
        uEnvironment::GetParentDir(parent, path.c_str());
        uEnvironment::JoinPaths(path, tail);
        EXPECT_EQ(path, joined);
        EXPECT_EQ(parent, before);
    }
    std::string program;
    uEnvironment::GetCurrentExecutablePath(program);
    EXPECT_EQ(program, std::filesystem::read_symlink("/proc/self/exe"));
}

TEST_F(uEnvironmentTest, ComesBackFromAnotherDirectory) {
    using Changer = uEnvironment::ScopedDirectoryChanger;
    std::filesystem::create_directory("there");
    std::string dir;
    EXPECT_THROW(Changer("nowhere"), source_utilities_error);
    {
        Changer changer("there");
        EXPECT_EQ(uEnvironment::GetWorkingDirectory(dir), (m_home / "there").string());
        EXPECT_THROW(changer.Change("/"), source_utilities_error);
        std::filesystem::remove(m_home / "there");
        EXPECT_THROW(uEnvironment::GetWorkingDirectory(dir), source_utilities_error);
    }
    EXPECT_EQ(uEnvironment::GetWorkingDirectory(dir), m_home.string());
}

}  // namespace
}  // namespace ZU_WEP
