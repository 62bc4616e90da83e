#include <nlohmann/json.hpp>

#include "stmdcm/reading/FindingKind.h"
#include "tests/tool/ToolRun.h"

namespace stmdcm {

namespace {

using CheckTest = ToolRun;

constexpr char kFull[] = STMDCM_TEST_DATA "/full.tdf";
constexpr char kUnknown[] = STMDCM_TEST_DATA "/settings-unknown-key.txt";

}  // namespace

TEST_F(CheckTest, StatusTellsWhetherThereIsAProblem) {
    const struct {
        std::string arguments;
        int status;
        const char* out;
        const char* error;
    } cases[] = {
        {STMDCM_TEST_DATA "/settings.txt", 0, "settings.txt: 1 note", ""},
        {STMDCM_TEST_DATA "/settings-packed.txt", 0, "settings-packed.txt: 6 notes", ""},
        {kFull, 1, "full.tdf: 2 warnings, 4 notes", ""},
        {std::string("--severity error ") + kFull, 0, "full.tdf: nothing found", ""},
        {std::string("/no/such/file ") + kUnknown, 4, "T-UNKNOWN-KEY line 2: \"STM_Colour\" is no property",
         "stmdcm: /no/such/file: there is no such file"},
        {std::string("/no/such/file ") + kUnknown, 4, "2 files: 3 errors, 1 note", "/no/such/file"},
        {Home().string(), 4, "F-UNREADABLE", "this is a directory"},
        {std::string("--as capture ") + kUnknown, 1, "F-NO-CAPTURE", ""},
        {std::string("--as settings ") + kFull, 1, "T-ZERO-BYTE", ""},
        {"--list", 0, "O-MISSING", ""},
        {"", 2, "", "FILE"},
        {"--as photo x", 2, "", "photo"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const Result result = Run("check " + c.arguments);
        EXPECT_EQ(result.status, c.status);
        EXPECT_NE(result.out.find(c.out), std::string::npos) << result.out;
        EXPECT_NE(result.error.find(c.error), std::string::npos) << result.error;
        EXPECT_EQ(result.error.empty(), *c.error == '\0') << result.error;
        ExpectNothingLeft();
    }
}

TEST_F(CheckTest, JsonSaysWhatTheTextSays) {
    const std::string files = std::string(kFull) + " " + kUnknown + " " STMDCM_TEST_DATA "/torn-payload.tdf /none";
    const std::string text = Run("check " + files).out;
    const Result result = Run("check --json " + files);
    EXPECT_EQ(result.status, 4);
    const auto document = nlohmann::json::parse(result.out);
    EXPECT_TRUE(document.at("problems").get<bool>());
    ASSERT_EQ(document.at("files").size(), 4U);
    EXPECT_TRUE(document.at("files")[3].at("kind").is_null());
    for (const auto& file : document.at("files")) {
        EXPECT_NE(text.find(file.at("path").get<std::string>() + ": "), std::string::npos);
        for (const auto& finding : file.at("findings")) {
            EXPECT_NE(text.find(finding.at("id").get<std::string>()), std::string::npos) << finding;
            EXPECT_NE(text.find(": " + finding.at("what").get<std::string>() + "\n"), std::string::npos) << finding;
            EXPECT_NE(text.find("reader: " + finding.at("reader").get<std::string>() + "\n"), std::string::npos);
            EXPECT_TRUE(finding.at("offset").is_null() || finding.at("offset").is_string());
        }
    }
    const auto list = nlohmann::json::parse(Run("check --list --json").out);
    EXPECT_EQ(list.at("kinds").size(), std::size(kFindingKinds));
}

}  // namespace stmdcm
