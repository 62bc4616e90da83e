// What may lie where a program looks for a file.

#include <sys/stat.h>

#include <csignal>
#include <filesystem>

#include "tests/faults/FaultTest.h"

namespace stmdcm_test {

namespace fs = std::filesystem;

namespace {

struct Trap {
    const char* name;
    void (*plant)(const std::string& path, const std::string& foreign);
};

const Trap kTraps[] = {
    {"a link to another's file", [](auto& path, auto& foreign) { fs::create_symlink(foreign + "/file", path); }},
    {"a link to nothing", [](auto& path, auto& foreign) { fs::create_symlink(foreign + "/none", path); }},
    {"a link to itself", [](auto& path, auto&) { fs::create_symlink(path, path); }},
    {"a pipe", [](auto& path, auto&) { ::mkfifo(path.c_str(), 0666); }},
    {"/dev/zero", [](auto& path, auto&) { fs::create_symlink("/dev/zero", path); }},
    {"/dev/full", [](auto& path, auto&) { fs::create_symlink("/dev/full", path); }},
    {"a folder", [](auto& path, auto&) { fs::create_directory(path); }},
    {"a file without rights",
     [](auto& path, auto& foreign) {
         fs::copy_file(foreign + "/file", path);
         ::chmod(path.c_str(), 0);
     }},
};

}  // namespace

void FaultTest::SpringTraps(const std::vector<std::string>& names) {
    m_machine.LeaveRoot();
    if (m_machine.Run({STMDCM_TOOL, "--version"}).status == 127) {
        GTEST_SKIP() << "others can't read this build";
    }
    for (const std::string& name : names) {
        const Snapshot foreign{{"file", m_before[m_before.contains(name) ? name : "full.tdf"]}};
        WriteWhole(m_machine.ForeignFolder() + "/file", foreign.at("file"));
        for (const Trap& trap : kTraps) {
            SCOPED_TRACE(name + " is " + trap.name);
            m_machine.Reset(m_before);
            const std::string path = m_machine.Folder() + "/" + name;
            fs::remove_all(path);
            trap.plant(path, m_machine.ForeignFolder());
            const Snapshot before = m_machine.Files();
            const FaultResult result = m_machine.Run(m_command);
            EXPECT_LT(result.status, 128) << "did not end by itself";
            EXPECT_TRUE(result == m_whole || Tells(result, name))
                << "ended " << result.status << ", printed: " << result.out.substr(0, 400)
                << "\n  said: " << result.error;
            EXPECT_EQ(m_machine.ForeignFiles(), foreign);
            for (const auto& [file, bytes] : m_machine.Files()) {
                EXPECT_TRUE(Holds(before, file, bytes) || Holds(m_after, file, bytes))
                    << file << " is neither as before nor as after";
            }
        }
    }
}

}  // namespace stmdcm_test
