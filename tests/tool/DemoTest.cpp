#include <nlohmann/json.hpp>

#include "tests/tool/TextLines.h"
#include "tests/tool/ToolRun.h"

namespace stmdcm {

namespace fs = std::filesystem;

namespace {

using DemoTest = ToolRun;

}  // namespace

TEST_F(DemoTest, PassesAndLeavesNothingBehind) {
    const Result result = Run("demo");
    EXPECT_EQ(result.status, 0);
    for (const char* verdict : {"EQUAL: 26 properties, 8 use cases and 2 object files",
                                "EQUAL: 26 properties, 0 use cases and 2 object files"}) {
        EXPECT_NE(result.out.find(verdict), std::string::npos) << result.out;
    }
    EXPECT_EQ(result.error, "");
    ExpectNothingLeft();
}

TEST_F(DemoTest, FailsWhenTheReloadedConfigurationDiffers) {
    const Result result = Run("demo --plugin " STMDCM_TAMPERING_PLUGIN);
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.out.find("DIFFERENT: 1 differences"), std::string::npos) << result.out;
    EXPECT_TRUE(HasLineWith(result.out, "STM_ATB_Id", "42  /  43")) << result.out;
    ExpectNothingLeft();
}

TEST_F(DemoTest, KeepsTheCapturesWhereItIsTold) {
    const fs::path kept = Temporary() / "kept";
    EXPECT_EQ(Run("demo --keep " + kept.string()).status, 0);
    EXPECT_TRUE(fs::exists(kept / "full.tdf"));
    EXPECT_TRUE(fs::exists(kept / "saved.tdf"));
    EXPECT_TRUE(fs::exists(kept / "live.tdf"));
    EXPECT_TRUE(fs::is_empty(Home()));

    const Result again = Run("demo --keep " + kept.string());
    EXPECT_EQ(again.status, 1);
    EXPECT_NE(again.error.find("not empty"), std::string::npos) << again.error;
}

TEST_F(DemoTest, SaysWhatIsWrong) {
    const struct {
        const char* arguments;
        int status;
        const char* sentence;
    } cases[] = {
        {"demo --plugin /no/such/plug-in.so", 1, "/no/such/plug-in.so"},
        {"demo --plugin " STMDCM_TEST_DATA "/settings.txt", 1, "can't be loaded"},
        {"demo --plugin " STMDCM_VORN, 1, "not a device-configuration plug-in"},
        {"demo --keep " STMDCM_TEST_DATA "/settings.txt", 1, "settings.txt: the directory can't be made"},
        {"", 2, "command is required"},
        {"frobnicate", 2, "frobnicate"},
        {"demo --color blue", 2, "blue"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const Result result = Run(c.arguments);
        EXPECT_EQ(result.status, c.status);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.error.rfind("stmdcm: ", 0), 0U) << result.error;
        EXPECT_NE(result.error.find(c.sentence), std::string::npos) << result.error;
        ExpectNothingLeft();
    }
    EXPECT_EQ(Run("--help").status, 0);
    EXPECT_EQ(Run("demo >/dev/full #").status, 1);
}

TEST_F(DemoTest, JsonSaysWhatTheTextSays) {
    const std::string text = Run("demo").out;
    const auto document = nlohmann::json::parse(Run("demo --json").out);
    EXPECT_EQ(document.at("schema"), 1);
    EXPECT_TRUE(document.at("equal").get<bool>());

    EXPECT_TRUE(document.at("live").at("equal").get<bool>());
    for (const auto& property : document.at("live").at("loaded").at("properties")) {
        EXPECT_TRUE(property.at("value") == property.at("default") ||
                    HasLineWith(text, property.at("name"), property.at("text")))
            << property;
    }
    const auto& loaded = document.at("loaded");
    ASSERT_EQ(loaded.at("properties").size(), 26U);
    for (const auto& property : loaded.at("properties")) {
        EXPECT_TRUE(HasLineWith(text, property.at("name"), property.at("text"))) << property;
    }
    for (const char* kind : {"sc", "cpt"}) {
        for (const auto& usecase : loaded.at("use_cases").at(kind)) {
            EXPECT_TRUE(HasLineWith(text, usecase.at("name"), usecase.at("sample_window").dump())) << usecase;
        }
    }
    for (const auto& file : document.at("recorded_object_files")) {
        EXPECT_TRUE(HasLineWith(text, file.at("path"), "missing")) << file;
        EXPECT_EQ(file.at("state"), "missing");
        EXPECT_TRUE(file.at("recorded").is_string());
    }
}

}  // namespace stmdcm
