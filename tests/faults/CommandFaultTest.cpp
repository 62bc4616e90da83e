// Every command, with each of its calls into the system failing: it says what is wrong, or has done all of its work.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <set>

#include "tests/faults/FaultRun.h"

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
    {"set in a capture", {"set", "full.tdf", "STM_ATB_Id=42"}, "full.tdf"},
    {"set in settings", {"set", "settings.txt", "STM_ATB_Id=42"}, "settings.txt"},
    {"apply", {"apply", "settings.txt", "packed.tdf"}, "packed.tdf"},
    {"restore", {"restore", "changed.tdf", "2"}, "changed.tdf"},
    {"convert to settings", {"convert", "full.tdf", "out.txt"}},
    {"convert over a file", {"convert", "settings.txt", "packed.tdf", "--force"}, "packed.tdf"},
    {"recover", {"recover", "torn-payload.tdf", "-o", "out.tdf"}},
    {"live", {"live", "--scenario", "example.json", "--cpu", "Core_0/Cluster", "--save", "full.tdf"}, "full.tdf"},
};

/// How far apart the calls are that a test hits: all of them in the soak.
unsigned Step(unsigned usual) {
    const char* soak = std::getenv("STMDCM_SOAK");
    return soak != nullptr && *soak != '\0' ? 1 : usual;
}

class CommandFaultTest : public testing::TestWithParam<Command> {
  protected:
    CommandFaultTest() {
        for (const char* name : {"full.tdf", "packed.tdf", "shadowed.tdf", "torn-payload.tdf", "settings.txt"}) {
            m_before[name] = ReadWhole(std::string(STMDCM_TEST_DATA "/") + name);
        }
        m_before["example.json"] = ReadWhole(STMDCM_SCENARIO);
        m_machine.Reset(m_before);
        m_machine.Run({STMDCM_TOOL, "set", "full.tdf", "STM_ATB_Id=43"});
        m_before["changed.tdf"] = m_machine.Files()["full.tdf"];
        m_command = {STMDCM_TOOL};
        m_command.insert(m_command.end(), GetParam().arguments.begin(), GetParam().arguments.end());
        m_whole = RunAnew({});
        m_after = m_machine.Files();
    }

    FaultResult RunAnew(const FaultPlan& plan) const {
        m_machine.Reset(m_before);
        return m_machine.Run(m_command, plan);
    }

    /// What a user reads in a file, or why not.
    std::string Meaning(const std::string& name, const std::string& bytes) {
        const auto known = m_meanings.find(bytes);
        if (known != m_meanings.end()) {
            return known->second;
        }
        const FaultResult shown = m_machine.Run({STMDCM_TOOL, "show", name, "--json"});
        return m_meanings[bytes] = std::to_string(shown.status) + shown.out;
    }

    /// The files are as before or as after; nothing else is there.
    std::string WhatIsWrongWithFiles(bool mayClean) {
        const Snapshot files = m_machine.Files();
        if (!m_machine.Left().empty() && mayClean) {
            return "left behind: " + m_machine.Left().begin()->first;
        }
        for (const auto& [name, bytes] : files) {
            const auto before = m_before.find(name), after = m_after.find(name);
            const bool isOld = before != m_before.end() && before->second == bytes;
            const bool isNew = after != m_after.end() && after->second == bytes;
            if (isOld || isNew) {
                continue;
            }
            if (!mayClean && name.find(".tmp") != std::string::npos) {
                continue;
            }
            if (name != GetParam().changes) {
                return name + " is neither as before nor as after";
            }
            const std::string meaning = Meaning(name, bytes);
            if (meaning != m_oldMeaning && meaning != m_newMeaning) {
                return name + " reads neither as before nor as after: " + meaning.substr(0, 400);
            }
        }
        for (const auto& [name, bytes] : m_before) {
            if (!files.contains(name)) {
                return name + " is gone";
            }
        }
        return "";
    }

    std::string WhatIsWrong(const FaultResult& result, const FaultPlan& plan) {
        if (result == m_whole && m_machine.Files() == m_after) {
            return "";
        }
        if (plan.mode == "kill") {
            return result.status == 128 + SIGKILL ? "" : "ended " + std::to_string(result.status);
        }
        if (result.status != 1 && result.status != 3 && result.status != 4) {
            return "ended " + std::to_string(result.status) + " with another result";
        }
        const std::string said = result.error + (result.out != m_whole.out ? result.out : "");  // check prints findings
        if (said.empty()) {
            return "ended " + std::to_string(result.status) + " without a word";
        }
        const std::string cause = plan.mode == "alloc"   ? "memory"
                                  : plan.error == EACCES ? "ermission"
                                                         : std::strerror(plan.error);
        const bool isFinding = m_whole.status == 1 && result.status == 1 && result.error.empty();
        if (result.status != 3 && !isFinding && said.find(cause) == std::string::npos) {
            return "names no cause";
        }
        if (said.find("/proc/self/fd") != std::string::npos || said.find("#") != std::string::npos) {
            return "names what is private";
        }
        return "";
    }

    void Try(FaultPlan plan, unsigned step) {
        if (*GetParam().changes != '\0') {
            const std::string name = GetParam().changes;
            m_machine.Reset(m_before);
            m_oldMeaning = Meaning(name, m_before[name]);
            m_machine.Reset(m_after);
            m_newMeaning = Meaning(name, m_after[name]);
        }
        FaultPlan counting = plan;
        counting.mode = plan.mode == "alloc" ? "alloc" : "count";
        counting.n = ~0U;
        const unsigned calls = RunAnew(counting).calls;
        for (plan.n = 1 + step / 2; plan.n <= calls; plan.n += step) {
            const FaultResult result = RunAnew(plan);
            std::string wrong = WhatIsWrong(result, plan);
            if (wrong.empty()) {
                wrong = WhatIsWrongWithFiles(plan.mode != "kill" && !plan.onwards);
            }
            if (!wrong.empty() && m_seen.insert(wrong + result.hit.substr(0, result.hit.find(' '))).second) {
                ADD_FAILURE() << wrong << "\n  " << plan.mode << " " << plan.n << " of " << calls << ": "
                              << (plan.mode == "fail" ? std::strerror(plan.error) : "")
                              << (plan.onwards ? " onwards" : "") << " at " << result.hit << "\n  ended "
                              << result.status << ", said: " << result.error;
            }
        }
    }

    mutable FaultMachine m_machine;
    Snapshot m_before;
    Snapshot m_after;
    std::vector<std::string> m_command;
    FaultResult m_whole;
    std::map<std::string, std::string> m_meanings;
    std::string m_oldMeaning;
    std::string m_newMeaning;
    std::set<std::string> m_seen;
};

TEST_P(CommandFaultTest, SaysWhatIsWrongOrDoesItsWork) {
    ASSERT_TRUE(m_whole.status == 0 || m_whole.status == 1 || m_whole.status == 3) << m_whole.error;
    for (const int error : {ENOSPC, EIO, EINTR, EMFILE, EACCES, ENOLCK}) {
        for (const bool onwards : {false, true}) {
            Try({"fail", 0, error, onwards}, Step(7));
        }
    }
}

TEST_P(CommandFaultTest, TakesWhatComesInPieces) {
    Try({"short", 0, EIO, false}, Step(3));
    Try({"short", 0, EIO, true}, Step(1000));
}

TEST_P(CommandFaultTest, LeavesOldOrNewWhenItIsKilled) {
    if (*GetParam().changes != '\0') {
        Try({"kill", 0, EIO, false}, Step(2));
    }
}

TEST_P(CommandFaultTest, SaysThatMemoryRunsOut) {
    Try({"alloc", 0, ENOMEM, false}, Step(41));
    Try({"alloc", 0, ENOMEM, true}, Step(41));
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
