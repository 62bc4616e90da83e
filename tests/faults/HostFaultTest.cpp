// A host of the plug-in, with each of its calls into the system and each allocation failing: no call ends the host,
// none says that all is well while something is lost, and the next one works.

#include <cerrno>
#include <cstring>
#include <sstream>

#include "tests/faults/FaultTest.h"
#include "tests/support/SectionList.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"

namespace stmdcm_test {
namespace {

struct Action {
    const char* name;
    const char* changes = "";
    std::vector<std::string> files = {};  ///< that it works on
};

constexpr char kMine[] = ".ZU-trace/settings/mine.dcm";

const Action kActions[] = {{"load-capture", "", {"full.tdf"}},
                           {"load-settings", "", {"settings.txt"}},
                           {"load-live", "", {"example.json"}},
                           {"save-capture", "bare.tdf", {"bare.tdf", "many.tdf"}},
                           {"save-settings", kMine, {kMine, ".ZU-trace"}},
                           {"use-cases"},
                           {"object-file"}};

class HostFaultTest : public FaultTest, public testing::WithParamInterface<Action> {
  protected:
    void SetUp() override {
        Snapshot& files = m_files;
        for (const char* name : {"full.tdf", "settings.txt"}) {
            files[name] = ReadWhole(std::string(STMDCM_TEST_DATA "/") + name);
        }
        files[kMine] = files["settings.txt"];
        files["bare.tdf"] = BareCapture();
        files["many.tdf"] = BareCapture() + stmdcm::MakeSection(Zu::Wep::Trace::kCommonSectionName, 1, ManyFiles()) +
                            stmdcm::MakeSection(Zu::Wep::Trace::kStmSectionName, 1, files["settings.txt"]);
        files["example.json"] = ReadWhole(STMDCM_SCENARIO);
        m_isTidy = false;
        m_machine.AddVariable("HOME=" + m_machine.Folder());
        m_machine.AddVariable("STMDCM_SCENARIO=example.json");
        m_machine.AddVariable("LD_LIBRARY_PATH=" STMDCM_SIMULATOR_DIR);
        Prepare({STMDCM_FAULT_HOST, STMDCM_PLUGIN, GetParam().name}, files, GetParam().changes);
        ASSERT_EQ(m_whole.status, 0) << m_whole.error;
    }

    Snapshot m_files;
    bool m_isAlone = false;  ///< one save, without a second that would hide what it has left

    static std::string ManyFiles() {
        std::string list;
        for (int i = 0; i < 20; ++i) {
            Zu::Wep::Trace::AppendObjectFileEntry(list,
                                                  {"core" + std::to_string(i), "/opt/app.out", 1'700'000'000 + i});
        }
        return list;
    }

    std::string WhatStopsWorkOn(const std::string&) override {
        const std::string told = m_machine.Run({STMDCM_FAULT_HOST, STMDCM_PLUGIN, GetParam().name, "once"}).out;
        return IsChanged() ? "" : "the next save is not found: " + told;
    }

    static bool IsFailure(const std::string& line) {
        return (!line.starts_with("true") && !line.starts_with("done")) || line.ends_with("bad_alloc");
    }

    /// A host is not told which file: it has named it.
    bool Tells(const FaultResult& result, const std::string&) const override {
        return result.status == 0 && IsFailure(result.out);
    }

    std::string Judge(const FaultResult& result, const FaultPlan& plan) override {
        if (plan.mode == "cut" && result.status == 0) {
            return "";  // a shorter file can be a whole one
        }
        if (result.status != 0) {
            return "the host ended " + std::to_string(result.status);
        }
        if (plan.mode == "alloc" && GetParam().name == std::string("load-live")) {
            return "";  // what fails for one attribute is logged, and leaves that attribute alone
        }
        if (m_isAlone && !result.out.starts_with("true") &&
            m_machine.Files()[GetParam().changes] != m_files[GetParam().changes]) {
            return "the save has failed, and left something";
        }
        std::istringstream whole(m_whole.out), now(result.out);
        unsigned differences = 0;
        bool isToldToBeDone = true;
        for (std::string expected, line; std::getline(whole, expected) && std::getline(now, line);) {
            differences += line == expected ? 0U : 1U;
            isToldToBeDone = isToldToBeDone && !IsFailure(line);
            if (line != expected && !IsFailure(line)) {
                return "another result, and no failure";
            }
        }
        // A settings file that can't be opened is quietly left alone.
        const bool isQuiet =
            GetParam().name == std::string("save-settings") && (plan.error == EMFILE || plan.error == EACCES);
        if (*GetParam().changes != '\0' && isToldToBeDone && !isQuiet && !IsChanged()) {
            return "true, and nothing is saved";
        }
        return !plan.onwards && differences > 1 ? "the next call failed, too" : "";
    }
};

TEST_P(HostFaultTest, LosesNothingInSilence) {
    for (const int error : {ENOSPC, EIO, EINTR, EMFILE, EACCES, ENOLCK}) {
        for (const bool onwards : {false, true}) {
            Try({"fail", 0, error, onwards}, FaultStep(7));
        }
    }
    Try({"short", 0, EIO, true}, FaultStep(7));
}

TEST_P(HostFaultTest, MemoryThatRunsOutEndsNoHost) {
    m_mayChangeFiles = GetParam().name == std::string("load-live");  // the settings file holds what was loaded
    for (const bool onwards : {false, true}) {
        Try({"alloc", 0, ENOMEM, onwards}, FaultStep(10), 400);
    }
    m_isAlone = *GetParam().changes != '\0';
    if (m_isAlone) {
        Prepare({STMDCM_FAULT_HOST, STMDCM_PLUGIN, GetParam().name, "once"}, m_files, GetParam().changes);
        Try({"alloc", 0, ENOMEM, true}, FaultStep(10), 400);
    }
}

TEST_P(HostFaultTest, MeetsFilesThatAreCutShort) {
    m_mayChangeFiles = true;
    Try({"cut", 0, EIO, false}, 1);
}

TEST_P(HostFaultTest, SurvivesALossOfPower) {
    if (*GetParam().changes != '\0') {
        LosePower();
    }
}

TEST_P(HostFaultTest, IsNotTrapped) { SpringTraps(GetParam().files); }

INSTANTIATE_TEST_SUITE_P(Each, HostFaultTest, testing::ValuesIn(kActions), [](const auto& action) {
    std::string name = action.param.name;
    name.erase(name.find('-'), name.find('-') == std::string::npos ? 0 : 1);
    return name;
});

}  // namespace
}  // namespace stmdcm_test
