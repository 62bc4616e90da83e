// set, apply, history and restore as a user meets them.

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "stmdcm/change/Assignment.h"
#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {
namespace {

TEST(AssignmentTest, TakesWhatAPropertyTakesAndNothingElse) {
    const struct {
        const char* text;
        std::optional<std::int32_t> value;
    } cases[] = {
        {"STM_ATB_Id=12", 12},
        {"STM_ATB_Id=-1", -1},
        {"STM_ATB_Id=0x2a", 42},
        {"STM_ATB_Id=2147483647", 2147483647},
        {"STM_ATB_Id=2147483648", {}},
        {"STM_ATB_Id=99999999999999999999", {}},
        {"STM_ATB_Id=12abc", {}},
        {"STM_ATB_Id= 12", {}},
        {"STM_ATB_Id=", {}},
        {"STM_ATB_Id=0x", {}},
        {"STM_ATB_Id=0x-1", {}},
        {"STM_ATB_Id=yes", {}},
        {"HEAD_Pointer_0=0x80000000", INT32_MIN},
        {"HEAD_Pointer_0=0x100000000", {}},
        {"STM_DTC_target_clock_hz=200M", 200'000'000},
        {"STM_DTC_target_clock_hz=1.25GHz", 1'250'000'000},
        {"STM_DTC_target_clock_hz=32.768 kHz", 32768},
        {"STM_DTC_target_clock_hz=1.2500000000G", 1'250'000'000},
        {"STM_DTC_target_clock_hz=3GHz", {}},
        {"STM_DTC_target_clock_hz=1.5", {}},
        {"STM_DTC_target_clock_hz=1.-5k", {}},
        {"STM_DTC_target_clock_hz=-1", {}},
        {"STM_DTC_target_clock_hz=200m", {}},
        {"STM_DTC_target_clock_hz=MHz", {}},
        {"STM_VornLib_Import=Yes", 1},
        {"Needs_Preprocess=false", 0},
        {"Needs_Preprocess=2", {}},
        {"CycleModeDelta=yes", {}},
        {"stm_atb_id=1", {}},
        {"STM_ATB_Id", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        try {
            EXPECT_EQ(Assignment::Parse(c.text).value, c.value);
        } catch (const Failure& failure) {
            EXPECT_FALSE(c.value) << failure.what();
            EXPECT_EQ(failure.Reason(), Failure::Kind::Request);
        }
    }
}

using ChangeTest = ConfigurationRun;

TEST_F(ChangeTest, EndsAsItShould) {
    const struct {
        const char* file;
        const char* arguments;  ///< $ is the file
        int status;
        const char* says;
        bool changes;
    } cases[] = {
        {"full.tdf", "set $ STM_ATB_Id=9 STM_STP_Version=1", 0, "12  ->  9", true},
        {"full.tdf", "set $ STM_ATB_Id=12", 0, "nothing to change", false},
        {"full.tdf", "set $ STM_ATB_Id=1 STM_ATB_Id=2", 2, "twice", false},
        {"full.tdf", "set $ STM_ATB_Id=x", 2, "a whole number", false},
        {"full.tdf", "set $", 2, "required", false},
        {"no-devid.tdf", "set $ STM_ATB_Id=9", 1, "DEVID", false},
        {"empty.tdf", "apply " STMDCM_TEST_DATA "/full.tdf $", 1, "DEVID", false},
        {"empty-devid.tdf", "set $ STM_ATB_Id=9", 1, "nothing in section DEVID", false},
        {"empty-decoder.tdf", "set $ STM_ATB_Id=4", 1, "nothing in section STMDECODERINFO", false},
        {"empty-decoder.tdf", "apply " STMDCM_TEST_DATA "/full.tdf $", 0, "STM_ATB_Id", true},
        {"empty-decoder.tdf", "restore $ 2", 1, "configuration 2 is empty", false},
        {"empty-decoder.tdf", "history $", 0, "STMDECODERINFO  current", false},
        {"zero-length.tdf", "set $ STM_ATB_Id=9", 1, "recover", false},
        {"torn-payload.tdf", "set $ STM_ATB_Id=9", 1, "recover", false},
        {"orphan-payload.tdf", "set $ STM_ATB_Id=9", 1, "recover", false},
        {"short-length.tdf", "set $ STM_ATB_Id=9", 1, "recover", false},
        {"settings.txt", "set $ STM_ATB_Id=9", 0, "12  ->  9", true},
        {"settings-unknown-key.txt", "set $ STM_ATB_Id=9", 3, "5  ->  9", true},
        {"settings-unknown-key.txt", "set $ STM_STP_Version=9", 1, "--force", false},
        {"settings-unknown-key.txt", "set $ STM_STP_Version=9 --force", 3, "line 3: STM_STP_Version", true},
        {"full.tdf", "set $ STM_DTC_target_pins=77", 3, "trace ports have", true},
        {"full.tdf", "set $ STM_DTC_target_clock_hz=0 --json", 3, "no clock runs", true},
        {"settings.txt", "set $ STM_STP_Version=9", 3, "the versions 1 and 2", true},
        {"settings.txt", "set $ STM_ATB_Id=300", 3, "the ids 1 to 111", true},
        {"packed.tdf", "apply " STMDCM_TEST_DATA "/settings.txt $", 0, "job 3, module 8", true},
        {"packed.tdf", "apply " STMDCM_TEST_DATA "/settings.txt $ --dry-run", 0, "would be changed", false},
        {"packed.tdf", "apply " STMDCM_TEST_DATA "/settings-unknown-key.txt $", 1, "--force", false},
        {"packed.tdf", "apply " STMDCM_TEST_DATA "/settings-unknown-key.txt $ --force", 3, "STM_Colour", true},
        {"packed.tdf", "apply $ $", 1, "come from", false},
        {"packed.tdf", "apply /none $", 1, "/none", false},
        {"packed.tdf", "restore $ 9", 1, "no configuration 9", false},
        {"shadowed.tdf", "restore $ 4", 0, "in force again", true},
        {"shadowed.tdf", "restore $ 4 --dry-run", 0, "would be in force again", false},
        {"shadowed.tdf", "history $", 0, "STM_ATB_Id 3 / 1", false},
        {"wrong-magic.tdf", "history $", 1, "no capture", false},
        {"zero-length.tdf", "history $", 3, "DEVID at 17: the section stands behind", false},
        {"torn-header.tdf", "history $ --json", 3, "\"at 833: 8 bytes at the end", false},
        {"full.tdf", "undo $", 1, "STMDECODERINFO in force is the first", false},
        {"empty.tdf", "undo $", 1, "there is no configuration", false},
        {"settings.txt", "undo $", 1, "no capture", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.file) + " " + c.arguments);
        const std::string file = Copy(c.file);
        const std::string before = Content(file);
        std::string arguments = c.arguments;
        for (std::size_t place = 0; (place = arguments.find('$')) != std::string::npos;) {
            arguments.replace(place, 1, file);
        }
        const Result result = Run(arguments);
        EXPECT_EQ(result.status, c.status) << result.error;
        EXPECT_NE((result.out + result.error).find(c.says), std::string::npos) << result.out << result.error;
        EXPECT_EQ(Content(file) != before, c.changes);
    }
}

TEST_F(ChangeTest, SetKeepsEveryOtherByteOfASettingsFile) {
    const std::string wide(985, ' ');
    const std::string packed = "{type=SC,id=8,jobid=3}\r\nSTM_ATB_Id = 7\r\n{type=PMI_CMI,name=CMI0,sw=4}";
    const struct {
        std::string text;
        const char* arguments;
        std::optional<std::string> changed;  ///< nothing: refused
    } cases[] = {
        {"STM_ATB_Id = 77", "STM_ATB_Id=5", "STM_ATB_Id = 5"},
        {"STM_ATB_Id = 77", "STM_STP_Version=1 STM_ATB_Id=77", "STM_ATB_Id = 77\nSTM_STP_Version = 1"},
        {"STM_ATB_Id 7\n\tSTM_ATB_Id=\t0x4 STM_ATB_Id\nodd\n", "STM_ATB_Id=9",
         "STM_ATB_Id 7\n\tSTM_ATB_Id=\t9 STM_ATB_Id\nodd\n"},
        {"{\r\nid=3\r\nid=4\r\n}\r\n", "STM_ATB_Id=9", "STM_ATB_Id = 9\r\n{\r\nid=3\r\nid=4\r\n}\r\n"},
        {packed, "STM_STP_Version=2 STM_VornLib_Import=yes",
         "{type=SC,id=8,jobid=3}\r\nSTM_ATB_Id = 7\r\nSTM_STP_Version = 2\r\nSTM_VornLib_Import = 1\r\n"
         "{type=PMI_CMI,name=CMI0,sw=4}"},
        {"STM_ATB_Id = " + std::string(1200, '1') + "\nSTM_STP_Version = 2\n", "STM_ATB_Id=1",
         "STM_ATB_Id = 1\nSTM_STP_Version = 2\n"},
        {wide + "STM_ATB_Id = 7\n", "STM_ATB_Id=12", {}},  // of which the limit leaves a 1
        {"STM_ATB_Id =\n", "STM_ATB_Id=12", {}},
        {"nothing\n", "STM_ATB_Id=12", {}},
        {packed + "\n\nSTM_STP_Version = 4", "STM_STP_Version=2", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text + " " + c.arguments);
        const std::string file = Write("one.txt", c.text);
        const Result result = Run("set " + file + " " + c.arguments);
        EXPECT_EQ(result.status == 1, !c.changed) << result.out << result.error;
        EXPECT_EQ(Content(file), c.changed.value_or(c.text)) << result.error;
    }
}

TEST_F(ChangeTest, SaysWhatIsLostOfACapture) {
    std::string bytes = Content(Sample("packed.tdf"));
    const std::string file = Write("packed.tdf", bytes.replace(bytes.find("{type=SC,id=8"), 13, "{type=SC,ix=8"));
    const char* lost = "\"ix\" is no key of SC";
    ExpectTold("", {{"set " + file + " STM_ATB_Id=9", 3, lost},
                    {"restore " + file + " 2 --dry-run", 3, lost},
                    {"restore " + file + " 2", 3, lost}});
}

TEST_F(ChangeTest, AppliesToManyAndGoesOnAfterABadOne) {
    const std::string good = Copy("packed.tdf"), bad = Copy("wrong-magic.tdf"), other = Copy("shadowed.tdf");
    const std::vector<Json> lines = RunLines("apply " + Sample("full.tdf") + " " + good + " " + bad + " " + other, 1);
    ASSERT_EQ(lines.size(), 3U);
    const auto of = [&](std::size_t i) { return lines[i].at("captures").at(0); };
    EXPECT_THAT(of(1).at("failure").get<std::string>(), testing::HasSubstr("wrong-magic.tdf"));
    const Json source = Configuration(Sample("full.tdf"));
    for (const auto& [row, file] : {std::pair(0U, good), {2U, other}}) {
        EXPECT_EQ(of(row).at("written"), true);
        EXPECT_EQ(Configuration(file).at("properties"), source.at("properties"));
        EXPECT_EQ(Configuration(file).at("use_cases"), source.at("use_cases"));
    }
}

TEST_F(ChangeTest, AppliesWhatTheSourceNamesAndIsAskedFor) {
    const std::string one = Write("one.txt", "STM_ATB_Id = 77");
    const std::string images = Write("images.tdf", Content(Sample("full.tdf")));
    CaptureEditor(images).Replace({{"DCM_COMMON", 1, ""}});
    const struct {
        std::string source;
        std::string options;
        int status;
        int atbId;  ///< 7 before
        bool hasSourceUsecases;
        std::size_t images;  ///< of the source; 2 before
    } cases[] = {
        {one, "", 0, 77, false, 2},
        {one, "--replace", 0, 77, true, 2},
        {one, "--only usecases", 1, 7, false, 2},
        {images, "", 0, 12, true, 0},
        {images, "--replace", 0, 12, true, 2},
        {images, "--except objects", 0, 12, true, 2},
        {images, "--only objects", 0, 7, false, 0},
        {images, "--only usecases,STM_ATB_Id", 0, 12, true, 2},
        {images, "--only properties --except STM_ATB_Id --except STM_STP_Version", 0, 7, false, 2},
        {images, "--except properties", 0, 7, true, 0},
        {images, "--only stm_atb_id", 2, 7, false, 2},
        {images, "--replace --only objects", 2, 7, false, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.source + " " + c.options);
        const std::string file = Copy("full.tdf");
        ASSERT_EQ(Run("apply " STMDCM_TEST_DATA "/settings-packed.txt " + file).status, 0);
        const Json before = Configuration(file);
        const Result result = Run("apply " + c.source + " " + file + " " + c.options);
        EXPECT_EQ(result.status, c.status) << result.error;
        const Json after = Configuration(file);
        EXPECT_EQ(after.at("use_cases"), (c.hasSourceUsecases ? Configuration(c.source) : before).at("use_cases"));
        EXPECT_EQ(after.at("object_files").size(), c.images);
        EXPECT_TRUE(HasLineWith(Run("show " + file).out, "STM_ATB_Id", std::to_string(c.atbId)));
    }
}

TEST_F(ChangeTest, JsonSaysWhatTheTextSays) {
    const std::string file = Sample("shadowed.tdf");
    const Json configurations = RunJson("history " + file).at("configurations");
    ASSERT_EQ(configurations.size(), 4U);
    ExpectShown(Run("history " + file).out, configurations, "state", "offset");
}

}  // namespace
}  // namespace stmdcm
