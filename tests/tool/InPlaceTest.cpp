// Changes in a capture, in place. What stops them in the midst is the matter of tests/faults.

#include <fcntl.h>

#include <numeric>

#include "source_utilities/PosixFile.h"
#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "tests/support/AppendSection.h"
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

    // But for one bit of a version the old bytes are all there.
    EXPECT_EQ(std::transform_reduce(original.begin(), original.end(), restored.begin(), 0, std::plus<>(),
                                    std::not_equal_to<>()),
              1);
}

TEST_F(InPlaceTest, UndoGoesBackBeforeTheLastChange) {
    const std::string file = Copy("full.tdf"), other = Copy("packed.tdf");
    const Json first = Configuration(file);
    ExpectTold("", {{"undo " + file, 1, "nothing was changed in it yet"},
                    {"undo " + Copy("settings.txt"), 1, "no capture"},
                    {"set " + file + " STM_ATB_Id=42", 0, ""},
                    {"apply " + other + " " + file, 0, ""}});
    const Json applied = Configuration(file);
    EXPECT_EQ(RunJson("undo --dry-run " + file, 0).at("restored").size(), 2U) << "one change of both sections";
    EXPECT_EQ(Configuration(file), applied);
    const Result undone = Run("undo " + file);
    EXPECT_TRUE(HasLineWith(undone.out, "configuration 1 (DCM_COMMON) and configuration 3 (STMDECODERINFO)", "again"));
    EXPECT_TRUE(HasLineWith(undone.out, "STM_ATB_Id  ", "->  42")) << undone.out;
    EXPECT_EQ(Configuration(file).at("object_files"), first.at("object_files"));
    ExpectTold("undo ", {{file, 0, ""}});
    EXPECT_EQ(Configuration(file), applied) << "undone twice";
    ExpectTold("set " + file, {{" STM_ATB_Id=43", 0, ""}});
    EXPECT_EQ(RunJson("undo " + file, 0).at("restored").size(), 1U) << "the images were not changed with it";
    EXPECT_EQ(Configuration(file), applied);
}

TEST_F(InPlaceTest, PruningLeavesTheRestAsItWas) {
    const std::string file = Copy("full.tdf"), original = Content(file), out = Path("out.tdf");
    for (int id = 1; id <= 5; ++id) {
        ExpectTold("set " + file, {{" STM_ATB_Id=" + std::to_string(id), 0, ""}});
    }
    const Json before = Configuration(file);
    const std::string changed = Content(file);
    const auto freed = [&](const std::string& options) {
        return std::stoul(RunJson("history " + file + options, 0).at("prune").at("freed").get<std::string>());
    };
    EXPECT_EQ(freed(" --prune 9"), 0U);
    for (std::size_t keep = 0; keep < 3; ++keep) {
        const std::string options = " --prune " + std::to_string(keep);
        EXPECT_EQ(freed(options + " --force -o " + out), freed(options));
        EXPECT_EQ(Content(out).size(), changed.size() - freed(options));
        EXPECT_EQ(RunJson("history " + out).at("configurations").size(), 2 + keep);
        EXPECT_EQ(Configuration(out), before);
        EXPECT_TRUE(Content(out).starts_with(original.substr(0, 20000))) << "payloads of others stay";
        EXPECT_EQ(Run("undo " + out).status, keep == 0 ? 1 : 0);
    }
    EXPECT_EQ(Content(file), changed);
    ExpectTold("history --prune 0 ", {{file + " -o " + file + " --force", 1, "this is the input"},
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
    const Result result = Shell("sh -c 'flock " + file + " sh -c \"sleep 2; mv " + other + " " + file +
                                "\" & sleep 0.5; " STMDCM_TOOL " set " + file + " STM_ATB_Id=42'");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "stmdcm: " + file + ": another program changes the file; waiting until it is done\n");
    EXPECT_TRUE(HasLineWith(result.out, "STM_ATB_Id", "7  ->  42")) << result.out;
    EXPECT_TRUE(HasLineWith(Run("show " + file).out, "STM_ATB_Id", "42"));
}

}  // namespace
}  // namespace stmdcm
