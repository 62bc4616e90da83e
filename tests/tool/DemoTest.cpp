#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {

namespace fs = std::filesystem;
using testing::HasSubstr;

using DemoTest = ConfigurationRun;

TEST_F(DemoTest, PassesSaysTheSameInJsonAndLeavesNothingBehind) {
    const Result result = Run("demo");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "");
    EXPECT_THAT(result.out, HasSubstr("EQUAL: 26 properties, 8 use cases and 2 object files"));
    EXPECT_THAT(result.out, HasSubstr("EQUAL: 26 properties, 0 use cases and 2 object files"));
    const Json document = RunJson("demo", 0);
    EXPECT_EQ(document.at("schema"), 1);
    EXPECT_TRUE(document.at("equal") && document.at("live").at("equal"));
    ASSERT_EQ(document.at("loaded").at("properties").size(), 26U);
    ExpectShown(result.out, document.at("loaded").at("properties"), "name", "text");
    for (const char* kind : {"sc", "cpt"}) {
        ExpectShown(result.out, document.at("loaded").at("use_cases").at(kind), "name", "sample_window");
    }
    ExpectShown(result.out, document.at("recorded_object_files"), "path", "state");
    EXPECT_TRUE(HasLineWith(result.out, document.at("recorded_object_files")[0].at("path"), "missing"));
    ExpectNothingLeft();
}

TEST_F(DemoTest, FailsWhenTheReloadedConfigurationDiffers) {
    const Result result = Run("demo --plugin " STMDCM_TAMPERING_PLUGIN);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("DIFFERENT: 1 differences"));
    EXPECT_TRUE(HasLineWith(result.out, "STM_ATB_Id", "42  /  43")) << result.out;
    ExpectNothingLeft();
}

TEST_F(DemoTest, KeepsTheCapturesWhereItIsToldAndSaysWhatIsWrong) {
    EXPECT_EQ(Run("demo --keep " + Path("kept")).status, 0);
    for (const char* name : {"kept/full.tdf", "kept/saved.tdf", "kept/live.tdf"}) {
        EXPECT_TRUE(fs::exists(Path(name))) << name;
    }
    ExpectTold("demo --", {{"keep " + Path("kept"), 1, "not empty"},
                           {"keep " + Sample("settings.txt"), 1, "settings.txt: the directory can't be made"},
                           {"plugin /no/such/plug-in.so", 1, "/no/such/plug-in.so"},
                           {"plugin " + Sample("settings.txt"), 1, "can't be loaded"},
                           {"plugin " STMDCM_VORN, 1, "not a device-configuration plug-in"},
                           {"color blue", 2, "blue"}});
    EXPECT_TRUE(fs::is_empty(Home()));
}

}  // namespace stmdcm
