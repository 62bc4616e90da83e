#include "stmdcm/capture/CaptureEditor.h"
#include "tests/tool/ConfigurationRun.h"
#include "trace/format/ObjectFileSection.h"

namespace stmdcm {

namespace fs = std::filesystem;

using ShowTest = ConfigurationRun;

TEST_F(ShowTest, JsonSaysWhatTheTextSays) {
    for (const char* name : {"full.tdf", "packed.tdf", "settings.txt"}) {
        SCOPED_TRACE(name);
        const bool isCapture = name[0] != 's';
        ExpectTold("show ", {{Sample(name), 0, ""}});
        const std::string shown = Run("show " + Sample(name)).out;
        const Json document = RunJson("show " + Sample(name));
        EXPECT_EQ(document.at("kind"), isCapture ? "capture" : "settings");
        const Json& configuration = document.at("configuration");
        ASSERT_EQ(configuration.at("properties").size(), 26U);
        ExpectShown(shown, configuration.at("properties"), "name", "text");
        for (const Json& property : configuration.at("properties")) {
            EXPECT_EQ(HasLineWith(shown, property.at("name"), "(default "),
                      property.at("value") != property.at("default"))
                << property;
        }
        for (const auto& [kind, field] : {std::pair("sc", "name"), {"cpt", "name"}, {"pmi_cmi", "source"}}) {
            ExpectShown(shown, configuration.at("use_cases").at(kind), field, "sample_window");
        }
        EXPECT_EQ(configuration.at("object_files").is_null(), !isCapture);
    }
    ExpectNothingLeft();
}

TEST_F(ShowTest, SelectsParts) {
    const Json changed = RunJson("show --changed " + Sample("full.tdf")).at("configuration");
    EXPECT_EQ(changed.at("properties").size(), 10U);
    EXPECT_TRUE(changed.at("use_cases").is_null());
    const std::string text = Run("show --changed --objects " + Sample("full.tdf")).out;
    EXPECT_TRUE(HasLineWith(text, "STM_DTC_target_clock_hz", "1 GHz"));
    EXPECT_TRUE(HasLineWith(text, "/opt/images/app0.out", "missing"));
    EXPECT_EQ(text.find("TWP_Protocol"), std::string::npos) << text;
    EXPECT_EQ(text.find("use cases"), std::string::npos) << text;
}

TEST_F(ShowTest, SaysWhatIsWrong) {
    fs::create_directory(Path("directory.tdf"));
    ExpectTold("show ",
               {{"/no/such.tdf", 1, "/no/such.tdf: there is no such file"},
                {Path("directory.tdf"), 1, "this is a directory"},
                {Write("empty", ""), 1, "empty: the file is empty"},
                {Write("blank", "\n \n"), 1, "sets no property and holds no use case"},
                {Write("words", "hello world\n"), 1, "sets no property and holds no use case"},
                {Write("binary", std::string("STM_ATB_Id = 3\n\0", 16)), 1, "neither a capture nor settings text"},
                {Write("capture.dat", Content(Sample("full.tdf"))), 1, "end in .tdf"},
                {Sample("wrong-magic.tdf"), 1, "this is no capture"},
                {Sample("empty.tdf"), 1, "no section STMDECODERINFO"},
                {Sample("no-devid.tdf"), 1, "no section DEVID"},
                {Sample("empty-devid.tdf"), 1, "DEVID at 26: the section holds nothing"},
                {Sample("empty-decoder.tdf"), 1, "the section holds nothing"},
                {Sample("huge-length.tdf"), 1, "at 26: section length over 128 MiB"},
                {Sample("short-length.tdf"), 1, "does not cover the header"},
                {Sample("torn-payload.tdf"), 3, "the payload's first 672 bytes, which are there, are read"},
                {Write("healthy", "STM_ATB_Id = 3\n"), 0, ""},
                {Write("lines", "STM_ATB_Id = 3\r\n\r\n"), 0, ""},
                {Write("blocks", "{\ntype=PMI_CMI\nname=CMI1\nsw=5\n}"), 0, ""},
                {Sample("shadowed.tdf"), 0, ""}});
    // What can be read of a capture that hosts can't load is shown.
    EXPECT_TRUE(HasLineWith(Run("show " + Sample("no-devid.tdf")).out, "STM_DTC_fprocess_clock_hz", "200 MHz"));
    EXPECT_EQ(Configuration(Sample("empty-devid.tdf")), Configuration(Sample("packed.tdf")));
    for (const char* name : {"empty.tdf", "empty-decoder.tdf"}) {
        EXPECT_TRUE(Configuration(Sample(name)).at("properties").is_null());
    }
    EXPECT_EQ(Run("show").status, 2);
}

TEST_F(ShowTest, ExplainSaysWhatShowSaysOfACaptureThatIsNotReadWhole) {
    const char* const clock = "STM_DTC_target_clock_hz";
    std::string bytes = Content(Sample("full.tdf"));
    bytes[bytes.find("DEVID")] = 'X';
    const std::string noDevice = Write("no-device.tdf", bytes);
    const std::string unread = "not in force default, not read STMDECODERINFO";
    const std::tuple<std::string, std::string, std::string> cases[] = {
        // the file, the name, and the places with their standing
        {noDevice, clock, unread},
        {noDevice, "core0", "in force DCM_COMMON"},
        {Sample("no-devid.tdf"), clock, unread},
        {Sample("empty-devid.tdf"), clock, unread},
        {Sample("empty-decoder.tdf"), clock, "not in force default"},
        {Sample("orphan-payload.tdf"), clock, unread},
        {Sample("zero-length.tdf"), clock, "not in force default"},
        {Sample("huge-length.tdf"), clock, unread},
        {Sample("short-length.tdf"), clock, "not in force default, not in force DEVID, not read STMDECODERINFO"},
        {Sample("torn-payload.tdf"), clock, "overridden default, in force STMDECODERINFO"},
        {Sample("malformed-common.tdf"), "core0", "in force DCM_COMMON"}};
    for (const auto& [file, name, places] : cases) {
        SCOPED_TRACE(file + " " + name);
        const Result shown = Run("show " + file);
        EXPECT_EQ(Run("explain " + file + " " + name).error, shown.error);
        std::string told;
        const Json explained = RunJson("explain " + file + " " + name, shown.status);
        for (const Json& each : explained.at("items").at(0).at("statements")) {
            told += (told.empty() ? "" : ", ") + each.at("standing").get<std::string>() + " " +
                    each.at("source").get<std::string>();
        }
        EXPECT_EQ(told, places);
        EXPECT_EQ(explained.at("loaded"), shown.status != 1);
    }
}

TEST_F(ShowTest, ExplainTellsEachPlaceInItsOrderAndWhichCounts) {
    const std::string capture = Write("run.tdf", Content(Sample("full.tdf")));
    ASSERT_EQ(Run("set " + capture + " STM_ATB_Id=42 STM_STP_Version=3").status, 3);
    std::string payload;
    Zu::Wep::Trace::AppendObjectFileEntry(payload, {"core0", "/new.out", 1});
    CaptureEditor(capture).Replace({{"DCM_COMMON", 1, payload}});
    const std::string settings =
        Write("s.txt", "STM_ATB_Id = 3\nSTM_ATB_Id = 5\nSTM_STP_Version =\nSTM_ATB_Id = 9\n{\ntype=SC\nname=m\n");
    const std::tuple<std::string, const char*, const char*, const char*> cases[] = {
        // the file, the name, the value in force, and each place with its standing and value
        {capture, "STM_ATB_Id", "42", "overridden 1, in force 42, not in force 12"},
        {capture, "STM_STP_Version", "3", "overridden 1, overridden 9, in force 3, not in force 2"},
        {capture, "core0", "/new.out", "in force /new.out, not in force /opt/images/app0.out"},
        {capture, "core1", "", "not in force /opt/images/app1.out"},
        {capture, "CMI1", "source CMI1", "in force source CMI1, not in force source CMI1"},
        {settings, "STM_ATB_Id", "5", "overridden 1, overridden 3, in force 5, not read "},
        {settings, "STM_STP_Version", "1", "in force 1, not read "},
        {settings, "m", "", "not read "}};
    for (const auto& [file, name, value, places] : cases) {
        SCOPED_TRACE(name);
        const Json item = RunJson("explain " + file + " " + name).at("items").at(0);
        const auto firstWords = [](const Json& text) {
            const std::string words = text.is_null() ? "" : text.get<std::string>();
            return words.substr(0, words.find(','));
        };
        std::string told;
        for (const Json& each : item.at("statements")) {
            told += (told.empty() ? "" : ", ") + each.at("standing").get<std::string>() + " " +
                    firstWords(each.at("value"));
        }
        EXPECT_EQ(told, places);
        EXPECT_EQ(firstWords(item.at("value")), value);
        EXPECT_EQ(Run("explain " + file + " no_such_name").status, 1);
    }
}

}  // namespace stmdcm
