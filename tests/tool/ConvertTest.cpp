#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {

namespace fs = std::filesystem;

using ConvertTest = ConfigurationRun;

TEST_F(ConvertTest, RoundTripsKeepTheConfiguration) {
    for (const char* name : {"settings.txt", "settings-packed.txt", "settings-crlf.txt"}) {
        const std::string capture = Path(std::string(name) + ".tdf");
        const std::string settings = Path(std::string(name) + ".dcm");
        ExpectTold("convert ", {{Sample(name) + " " + capture, 0, ""}, {capture + " " + settings, 0, ""}});
        EXPECT_EQ(Configuration(capture).at("object_files"), Json::array());
        EXPECT_EQ(Configuration(settings), Configuration(Sample(name)));
        EXPECT_EQ(Run("diff " + capture + " " + Sample(name)).status, 0);
        EXPECT_EQ(Run("extract " + capture + " DEVID").out, "written_by=stmdcm\n");
        EXPECT_EQ(Run("check --severity warning " + capture).out, capture + ": loads; nothing found\n");
    }
    EXPECT_TRUE(fs::is_empty(Home()));
}

TEST_F(ConvertTest, SaysWhatIsLost) {
    const struct {
        std::string from;
        std::vector<const char*> lost;
    } cases[] = {
        {Sample("full.tdf"), {"the 2 of " STMDCM_TEST_DATA "/full.tdf are lost", "the section DEVID"}},
        {Sample("no-devid.tdf"), {"no section DEVID"}},
        {Sample("settings-unknown-key.txt"), {"is no property", "not read"}},
        {Sample("empty-devid.tdf"), {"DEVID at 26: the section holds nothing"}},
    };
    for (const auto& [from, lost] : cases) {
        const std::string arguments = "convert --force " + from + " " + Path("out");
        const Json told = RunJson(arguments, 3).at("lost");
        ASSERT_EQ(told.size(), lost.size()) << told;
        for (std::size_t i = 0; i < lost.size(); ++i) {
            EXPECT_THAT(told[i].get<std::string>(), testing::HasSubstr(lost[i]));
            ExpectTold(arguments, {{"", 3, lost[i]}});
        }
        EXPECT_EQ(Configuration(from).at("use_cases"), Configuration(Path("out")).at("use_cases"));
    }
    EXPECT_THAT(Run("convert --force " + Sample("full.tdf") + " " + Path("out")).out,
                testing::HasSubstr("with losses"));
}

TEST_F(ConvertTest, WorksInPipes) {
    const std::string full = Sample("full.tdf"), other = Path("other.txt"), back = Path("back.tdf");
    ASSERT_EQ(Run("convert " + full + " " + other).status, 3);
    for (const std::string& line :
         {"convert - - <" + full, "convert " + full + " -o -", "convert - -o - --as settings <" + full}) {
        EXPECT_EQ(Run(line).out, Content(other)) << line;
    }
    ASSERT_EQ(Run("convert " + other + " " + back).status, 0);
    EXPECT_EQ(Run("convert - - <" + other).out, Content(back));
    EXPECT_EQ(Run("convert - - --as settings <" + other).out, Content(other));
    const std::string all = STMDCM_TOOL " show ";
    EXPECT_EQ(Shell("cat " + full + " | " + all + "-").out, Run("show " + full).out);
    EXPECT_EQ(Run("diff " + full + " - <" + other).status, 0);
    EXPECT_EQ(RunJson("diff - " + full + " <" + back, 1).at("left").at("file"), "-");
    ExpectTold("", {{"show - </dev/null", 1, "stmdcm: -: the file is empty"},
                    {"show --json - </dev/null", 1, "stmdcm: -: the file is empty"},
                    {"convert - - --as capture <" + full, 1, "use apply"},
                    {"convert --json - - <" + full, 2, "--json"},
                    {"sections --plugin x.so " + full, 2, "sections loads no plug-in; leave --plugin out"},
                    {"show - --plugin x.so <" + full, 2, "--plugin needs a file"}});
    ExpectNothingLeft(2);
}

TEST_F(ConvertTest, NeverTouchesWhatIsThere) {
    const std::string settings = Write("settings", "STM_ATB_Id = 3\n");
    const std::string capture = Write("capture.tdf", Content(Sample("full.tdf")));
    fs::create_hard_link(settings, Path("link"));
    ExpectTold("convert ", {{capture + " " + settings, 1, "--force"},
                            {settings + " " + capture + " --force", 1, "use apply"},
                            {settings + " " + Path("link") + " --force", 1, "this is the input"},
                            {capture + " " + Path("other.tdf"), 1, "use apply"},
                            {"/no/such " + settings + " --force", 1, "there is no such file"},
                            {Sample("empty.tdf") + " " + settings + " --force", 1, "no section"},
                            {Sample("empty-decoder.tdf") + " " + settings + " --force", 1, "the section holds nothing"},
                            {capture + " /no/directory/settings", 1, "/no/directory/settings"},
                            {capture + " " + Temporary().string() + " --force", 1, "a directory"},
                            {capture, 2, "TO is required"}});
    EXPECT_EQ(Content(settings), "STM_ATB_Id = 3\n");
    EXPECT_EQ(Content(capture), Content(Sample("full.tdf")));
    EXPECT_FALSE(fs::exists(Path("other.tdf")));
    EXPECT_EQ(Run("convert " + capture + " " + settings + " --force").status, 3);
    EXPECT_NE(Content(settings).find("STM_ATB_Id = 12\n"), std::string::npos);
}

}  // namespace stmdcm
