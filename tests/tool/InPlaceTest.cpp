// Changes in a capture, in place. What stops them in the midst is the matter of tests/faults.

#include <fcntl.h>

#include <numeric>

#include "source_utilities/PosixFile.h"
#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "stmdcm/change/Undo.h"
#include "stmdcm/pins/PinSection.h"
#include "tests/support/AppendSection.h"
#include "tests/support/KillAtSyscall.h"
#include "tests/tool/ConfigurationRun.h"
#include "trace/format/SectionLayout.h"
#include "trace/format/StmSections.h"

namespace stmdcm {
namespace {

using namespace Zu::Wep::Trace;
using InPlaceTest = ConfigurationRun;

TEST_F(InPlaceTest, HistoryGivesBackTheBytes) {
    const std::string file = Copy("packed.tdf"), original = Content(file);  // the plug-in would write other bytes
    const Json first = Configuration(file);
    ExpectTold("set " + file, {{" STM_ATB_Id=42", 0, ""}, {" STM_ATB_Id=43", 0, ""}});
    const auto states = [&] {
        std::string text;
        const Json rows = RunJson("history " + file).at("configurations");
        for (const Json& row : rows) {
            text += row.at("section").get<std::string>()[0] + row.at("state").get<std::string>() + " ";
        }
        return text;
    };
    EXPECT_EQ(states(), "Dcurrent Sretired Sretired Scurrent ");
    ExpectTold("restore " + file, {{" 2", 0, ""}});
    EXPECT_EQ(Configuration(file), first);
    EXPECT_EQ(states(), "Dcurrent Sretired Sretired Sretired Scurrent ");
    const std::string restored = Content(file);
    ExpectTold("restore " + file, {{" 2", 0, ""}, {" 5", 0, ""}, {" 6", 1, "no configuration 6"}});
    EXPECT_EQ(Content(file), restored) << "there was nothing to restore";

    // But for one byte of a version the old bytes are all there.
    EXPECT_EQ(std::transform_reduce(original.begin(), original.end(), restored.begin(), 0, std::plus<>(),
                                    std::not_equal_to<>()),
              1);
}

TEST_F(InPlaceTest, UndoGoesBackBeforeTheLastChangeAndRedoBringsItBack) {
    const std::string file = Path("capture.tdf"),
                      set = "set $ STM_ATB_Id=", apply = "apply " + Copy("packed.tdf") + " $";
    const std::string places = "objects $ --update --accept-changed --map /opt/images/app0.out=" + Copy("settings.txt");
    std::vector<std::string> afterAWholeRound{apply};  // of the changes' numbers
    for (int id = 1; id <= 31; ++id) {
        afterAWholeRound.push_back(set + std::to_string(id));
    }
    const struct {
        const char* sample;
        std::vector<std::string> changes;
        std::vector<int> restored;
    } cases[] = {
        {"full.tdf", {set + "42", apply}, {1, 3}},
        {"full.tdf", {apply, set + "42"}, {4}},
        {"full.tdf", {places, set + "60"}, {2}},  // the new places of the images stay
        {"full.tdf", {apply, "restore $ 1"}, {3}},
        {"full.tdf", {apply, "undo $", set + "60"}, {6}},
        {"full.tdf", {apply, "undo $", "undo $ --redo"}, {5, 6}},
        {"full.tdf", afterAWholeRound, {34}},
        {"shadowed.tdf", {set + "30"}, {2}},  // a later save of the host never was in force
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sample + testing::PrintToString(c.changes));
        Write("capture.tdf", Content(Sample(c.sample)));
        Json before, after = Configuration(file);
        for (std::string change : c.changes) {
            Run(change.replace(change.find('$'), 1, file));
            before = std::exchange(after, Configuration(file));
        }
        ASSERT_NE(before, after);
        std::vector<int> restored;
        const Json told = RunJson("undo --dry-run " + file, 0);
        for (const Json& entry : told.at("restored")) {
            restored.push_back(entry.at("number"));
        }
        EXPECT_EQ(restored, c.restored);
        const std::string both = file + " " + file, summary = "2 files: 1 changed, 1 as asked already";
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(Configuration(file), after);
            ExpectTold("undo ", {{both, 0, summary}});
            EXPECT_EQ(Configuration(file), before);
            ExpectTold("undo --redo ", {{both, 0, summary}});
        }
    }
}

/// A change of both sections, its undo and redo.
TEST_F(InPlaceTest, TheSameCommandDoesTheRestWhereverItWasKilledAndUndoIsRight) {
    const std::string file = Copy("full.tdf"), apply = "apply " + Copy("packed.tdf") + " ", original = Content(file);
    const Json first = Configuration(file);
    ASSERT_EQ(Run(apply + file).status, 0);
    const std::string changed = Content(file), settings = Run("extract " + file + " STMDECODERINFO").out;
    const Json both = Configuration(file);
    ASSERT_EQ(Run("undo " + file).status, 0);
    const std::string undone = Content(file);
    const stmdcm_test::Work change = [&] {
        return CaptureEditor(file).Replace({{"DCM_COMMON", 1, ""}, {kStmSectionName, 1, settings}}) ? 0 : 1;
    };
    const stmdcm_test::Work undo = [&] { return UndoLastChange(file, UndoDirection::Undo).isWritten ? 0 : 1; };
    const stmdcm_test::Work redo = [&] { return UndoLastChange(file, UndoDirection::Redo).isWritten ? 0 : 1; };
    const struct {
        const std::string& start;
        stmdcm_test::Work work;
        std::vector<std::pair<std::string, const Json&>> then;  ///< commands, and what is in force behind each
    } cases[] = {
        {original, change, {{apply, both}, {"undo ", first}, {"undo --redo ", both}}},
        {changed, undo, {{"undo ", first}, {"undo --redo ", both}}},
        {changed, undo, {{"undo --redo ", both}, {"undo ", first}}},
        {undone, redo, {{"undo --redo ", both}, {"undo ", first}}},
    };
    for (const auto& c : cases) {
        const auto prepare = [&] { Write("full.tdf", c.start); };
        const auto check = [&](const stmdcm_test::ChildRun&) {
            for (const auto& [command, wanted] : c.then) {
                EXPECT_EQ(Run(command + file).status, 0);
                EXPECT_TRUE(Configuration(file) == wanted) << command;
            }
        };
        stmdcm_test::StopEverywhere(0, {SYS_pwrite64, SYS_pwritev}, c.work, 1, prepare, check);
    }
}

TEST_F(InPlaceTest, PruningLeavesTheRestAsItWas) {
    const std::string file = Copy("full.tdf"), original = Content(file), out = Path("out.tdf");
    stmdcm_test::AppendSection(file.c_str(), kStmSectionName, 1, "STM_ATB_Id = 3\n");  // never is in force
    for (int id = 1; id <= 5; ++id) {
        ExpectTold("set " + file, {{" STM_ATB_Id=" + std::to_string(id), 0, ""}});
        CaptureEditor(file).Replace({{kPinSectionName, kPinSectionVersion, ""}});
    }
    const Json before = Configuration(file);
    const std::string changed = Content(file);
    const auto plan = [&](const std::string& options) { return RunJson("history " + file + options, 0).at("prune"); };
    const auto freed = [&](const std::string& options) {
        return std::stoul(plan(options).at("freed").get<std::string>());
    };
    EXPECT_EQ(plan(" --prune 9").at("dropped"), Json{3});
    for (std::size_t keep = 0; keep < 3; ++keep) {
        const std::string options = " --prune " + std::to_string(keep);
        EXPECT_EQ(freed(options + " --force -o " + out), freed(options));
        EXPECT_EQ(Content(out).size(), changed.size() - freed(options));
        EXPECT_EQ(RunJson("history " + out).at("configurations").size(), 2 + keep);
        EXPECT_EQ(plan(options).at("dropped_pins"), 4 - keep);
        EXPECT_EQ(Configuration(out), before);
        EXPECT_TRUE(Content(out).starts_with(original.substr(0, 20000))) << "payloads of others stay";
        EXPECT_EQ(Run("undo " + out).status, keep == 0 ? 1 : 0);
    }
    EXPECT_EQ(Content(file), changed);
    ExpectTold("history --prune 0 ", {{file + " -o " + file + " --force", 1, "this is the input"},
                                      {file + " -o " + Path("out.txt"), 2, "to end in .tdf"},
                                      {file + " " + out + " -o " + Path("both"), 2, "-o is for one capture"},
                                      {Sample("torn-payload.tdf"), 1, "recover first"}});
}

TEST_F(InPlaceTest, RefusesToGrowPastFourGigabytes) {
    const std::string file = Copy("full.tdf"), before = Content(file);
    const std::uint64_t size = kMaxFileSize - 100;
    for (std::uint64_t offset = before.size(); offset < size;) {  // sections that end at `size`
        const auto length = static_cast<std::uint32_t>(std::min<std::uint64_t>(size - offset, kMaxSectionLength));
        const auto out = ZU_WEP::PosixFile::Open(file.c_str(), O_WRONLY);
        ASSERT_TRUE(out.WriteAt(offset, {EncodeSectionStart(length, "", 1)}));
        offset += length;
    }
    std::filesystem::resize_file(file, size);
    ExpectTold("set " + file, {{" STM_ATB_Id=42", 1, "past 4 GiB"}});
    EXPECT_EQ(std::filesystem::file_size(file), size);
}

using TwoUsersTest = ConfigurationRun;

/// Hosts take no lock while they append.
TEST_F(TwoUsersTest, AChangeOverwritesNothingThatAHostAppendsMeanwhile) {
    const std::string file = Copy("full.tdf");
    CaptureEditor editor(file);
    stmdcm_test::AppendSection(file.c_str(), "HOST", 1, "appended meanwhile");
    EXPECT_THROW(editor.Replace({{kStmSectionName, kStmSectionVersion, "STM_ATB_Id = 1\n"}}), Failure);
    const std::string after = Content(file);
    EXPECT_TRUE(after.ends_with("appended meanwhile"));
    EXPECT_TRUE(after.starts_with(Content(Copy("full.tdf"))));
}

TEST_F(TwoUsersTest, LoseNothingOfEachOther) {
    for (const char* name : {"full.tdf", "settings.txt"}) {
        const std::string file = Copy(name);
        std::string command;
        for (int i = 0; i < 8; ++i) {
            command += "set " + file + " MReqInfo_Sel_" + std::to_string(i) + "=" + std::to_string(i + 1) +
                       " >/dev/null & " STMDCM_TOOL " ";
        }
        Run(command + "--version; wait #");
        const std::string shown = Run("show --changed " + file).out;
        for (int i = 0; i < 8; ++i) {
            EXPECT_NE(shown.find("MReqInfo_Sel_" + std::to_string(i)), std::string::npos) << shown;
        }
    }
}

TEST_F(TwoUsersTest, AreToldThatTheyWaitAndChangeTheFileThatIsThereThen) {
    const std::string file = Copy("full.tdf"), other = Copy("packed.tdf");
    const Result result = Shell("sh -c 'flock " + file + " sh -c \"sleep 4; mv " + other + " " + file +
                                "\" & sleep 0.5; " STMDCM_TOOL " set " + file + " STM_ATB_Id=42'");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "stmdcm: " + file + ": another program changes the file; waiting until it is done\n");
    EXPECT_TRUE(HasLineWith(result.out, "STM_ATB_Id", "7  ->  42")) << result.out;
    EXPECT_TRUE(HasLineWith(Run("show " + file).out, "STM_ATB_Id", "42"));
}

}  // namespace
}  // namespace stmdcm
