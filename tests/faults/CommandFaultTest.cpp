// Every command, with each of its calls into the system failing: it says what is wrong, or has done all of its work.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

#include "tests/faults/FaultTest.h"

namespace stmdcm_test {
namespace {

struct Command {
    const char* name;
    std::vector<std::string> arguments;
    /// A file that is changed in place: it may be left as before or as after, whatever else happens.
    const char* changes = "";
};

const Command kCommands[] = {
    {"show a capture", {"show", "full.tdf"}},
    {"show settings", {"show", "settings.txt"}},
    {"check a capture", {"check", "full.tdf"}},
    {"check settings", {"check", "settings.txt"}},
    {"check many", {"check", "full.tdf", "packed.tdf"}},
    {"diff", {"diff", "full.tdf", "packed.tdf"}},
    {"sections", {"sections", "full.tdf"}},
    {"extract", {"extract", "full.tdf", "STMDECODERINFO", "-o", "out.bin"}},
    {"history", {"history", "shadowed.tdf"}},
    {"objects", {"objects", "full.tdf"}},
    {"objects, new paths",
     {"objects", "full.tdf", "--map", "/opt/images/app0.out=settings.txt", "--update", "--accept-changed"},
     "full.tdf"},
    {"objects, pins", {"objects", "found.tdf", "--pin"}, "found.tdf"},
    {"explain", {"explain", "changed.tdf", "STM_ATB_Id"}},
    {"bundle", {"bundle", "found.tdf", "-o", "out.bundle", "--force"}},
    {"unbundle", {"unbundle", "run.bundle", "-o", "out.tdf"}},
    {"set in a capture", {"set", "full.tdf", "STM_ATB_Id=42"}, "full.tdf"},
    {"set where others are shadowed", {"set", "shadowed.tdf", "STM_ATB_Id=42"}, "shadowed.tdf"},
    {"set in settings", {"set", "settings.txt", "STM_ATB_Id=42"}, "settings.txt"},
    {"apply", {"apply", "settings.txt", "packed.tdf"}, "packed.tdf"},
    {"apply to a host's own capture", {"apply", "settings.txt", "bare.tdf"}, "bare.tdf"},
    {"restore", {"restore", "changed.tdf", "2"}, "changed.tdf"},
    {"undo", {"undo", "changed.tdf"}, "changed.tdf"},
    {"prune", {"history", "--prune", "0", "changed.tdf", "-o", "out.tdf"}},
    {"convert to settings", {"convert", "full.tdf", "out.txt"}},
    {"convert over a file", {"convert", "shadowed.tdf", "settings.txt", "--force"}, "settings.txt"},
    {"recover", {"recover", "torn-payload.tdf", "-o", "out.tdf"}},
    {"recover, a plan", {"recover", "torn-payload.tdf", "--plan"}},
    {"live", {"live", "--scenario", "example.json", "--cpu", "Core_0/Cluster", "--save", "out.tdf"}},
};

class CommandFaultTest : public FaultTest, public testing::WithParamInterface<Command> {
  protected:
    void SetUp() override {
        Snapshot files;
        for (const char* name : {"full.tdf", "packed.tdf", "shadowed.tdf", "torn-payload.tdf", "settings.txt"}) {
            files[name] = ReadWhole(std::string(STMDCM_TEST_DATA "/") + name);
        }
        files["bare.tdf"] = BareCapture();
        files["example.json"] = ReadWhole(STMDCM_SCENARIO);
        files["images/app0.out"] = "one image";
        files["found.tdf"] = files["full.tdf"];
        m_machine.Reset(files);
        m_machine.Run({STMDCM_TOOL, "set", "full.tdf", "STM_ATB_Id=43"});
        m_machine.Run({STMDCM_TOOL, "objects", "found.tdf", "--map", "/opt/images/app0.out=images/app0.out", "--update",
                       "--accept-changed"});
        m_machine.Run({STMDCM_TOOL, "bundle", "found.tdf", "-o", "run.bundle", "--force"});
        for (const auto& [name, bytes] : m_machine.Files()) {
            if ((name.starts_with("run.bundle/") && name != "run.bundle/images") || name == "found.tdf") {
                files[name] = bytes;
            }
        }
        files["changed.tdf"] = m_machine.Files()["full.tdf"];
        std::vector<std::string> command{STMDCM_TOOL};
        command.insert(command.end(), GetParam().arguments.begin(), GetParam().arguments.end());
        Prepare(command, files, GetParam().changes);
    }

    bool Tells(const FaultResult& result, const std::string& name) const override {
        return result.status != 0 && (result.error + result.out).find(name) != std::string::npos;
    }

    std::string Judge(const FaultResult& result, const FaultPlan& plan) override {
        if (plan.mode == "cut") {  // a shorter file can be a whole one
            const bool isWell = result.status == 0 || result.status == 3;
            return isWell || Tells(result, std::filesystem::path(result.hit).filename()) ? "" : "fails without a word";
        }
        if (plan.mode == "kill") {
            return result.status == 128 + SIGKILL ? "" : "ended " + std::to_string(result.status);
        }
        // An image that can't be read costs itself alone.
        m_mayChangeFiles =
            result.status == 3 && result.error.find("app0.out, is not in the bundle") != std::string::npos;
        if (result.status != 1 && result.status != 3 && result.status != 4) {
            return "ended " + std::to_string(result.status) + " with another result";
        }
        const std::string said = result.error + (result.out != m_whole.out ? result.out : "");  // check prints findings
        if (said.empty()) {
            return "ended " + std::to_string(result.status) + " without a word";
        }
        for (const char* what :
             {"/proc/self/", ".stmdcm-", "zu_trace_log", "basic_", "std::", "exception", "filesystem"}) {
            if (said.find(what) != std::string::npos) {
                return std::string("names what no user knows: ") + what;
            }
        }
        const std::string cause = plan.mode == "alloc"   ? "memory"
                                  : plan.error == EACCES ? "ermission"
                                                         : std::strerror(plan.error);
        if (GetParam().arguments.front() == "live" && plan.onwards) {
            return "";  // the log, which tells the cause, can't be written either
        }
        const bool isFinding = m_whole.status == 1 && result.status == 1 && result.error.empty();
        return result.status != 3 && !isFinding && said.find(cause) == std::string::npos ? "names no cause" : "";
    }
};

TEST_P(CommandFaultTest, SaysWhatIsWrongOrDoesItsWork) {
    ASSERT_TRUE(m_whole.status == 0 || m_whole.status == 1 || m_whole.status == 3) << m_whole.error;
    for (const int error : {ENOSPC, EIO, EINTR, EMFILE, EACCES, ENOLCK}) {
        for (const bool onwards : {false, true}) {
            Try({"fail", 0, error, onwards}, FaultStep(7));
        }
    }
}

TEST_P(CommandFaultTest, TakesWhatComesInPieces) {
    Try({"short", 0, EIO, false}, FaultStep(3));
    Try({"short", 0, EIO, true}, FaultStep(1000));
}

TEST_P(CommandFaultTest, LeavesOldOrNewWhenItIsKilled) {
    if (*GetParam().changes != '\0') {
        Try({"kill", 0, EIO, false}, 1);
    }
}

TEST_P(CommandFaultTest, SaysThatMemoryRunsOut) {
    if (GetParam().arguments.front() == "live") {
        return;  // the simulator's reader of JSON ends a program that has no memory left
    }
    Try({"alloc", 0, ENOMEM, false}, FaultStep(41));
    Try({"alloc", 0, ENOMEM, true}, FaultStep(41));
}

TEST_P(CommandFaultTest, MeetsFilesThatAreCutShort) {
    m_mayChangeFiles = true;
    Try({"cut", 0, EIO, false}, 1);
}

TEST_P(CommandFaultTest, SurvivesALossOfPower) {
    if (m_after != m_before) {
        LosePower();
    }
}

TEST_P(CommandFaultTest, IsNotTrapped) {
    std::vector<std::string> files;
    for (const std::string& argument : GetParam().arguments) {
        if (argument.find('.') != std::string::npos && argument.find('=') == std::string::npos) {
            files.push_back(argument);
        }
    }
    SpringTraps(files);
}

std::string NameOf(const testing::TestParamInfo<Command>& command) {
    std::string name;
    std::copy_if(command.param.name, command.param.name + std::strlen(command.param.name), std::back_inserter(name),
                 [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; });
    return name;
}

INSTANTIATE_TEST_SUITE_P(Each, CommandFaultTest, testing::ValuesIn(kCommands), NameOf);

}  // namespace
}  // namespace stmdcm_test
