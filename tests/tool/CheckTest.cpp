#include <filesystem>
#include <string>
#include <utility>

#include "stmdcm/reading/FindingKind.h"
#include "tests/tool/CheckInputs.h"
#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {

namespace {

namespace fs = std::filesystem;
using stmdcm_test::WriteWhole;
using testing::HasSubstr;
using CheckTest = ConfigurationRun;

constexpr char kFull[] = STMDCM_TEST_DATA "/full.tdf";
constexpr char kUnknown[] = STMDCM_TEST_DATA "/settings-unknown-key.txt";

/// With what a user puts in the place of the words in capitals.
std::string Filled(std::string command) {
    const std::pair<std::string, std::string> words[] = {
        {"GOOD", STMDCM_TEST_DATA "/settings.txt"}, {"OLD=NEW", "/none=."}, {"NAME=VALUE", "STM_ATB_Id=5"}};
    for (const auto& [word, value] : words) {
        if (const auto at = command.find(word); at != std::string::npos) {
            command.replace(at, word.size(), value);
        }
    }
    return command;
}

}  // namespace

TEST_F(CheckTest, StatusTellsWhetherThereIsAProblem) {
    const struct {
        std::string arguments;
        int status;
        const char* out;
        const char* error;
    } cases[] = {
        {STMDCM_TEST_DATA "/settings.txt", 0, "settings.txt: loads; 1 note", ""},
        {STMDCM_TEST_DATA "/settings-packed.txt", 0,
         "settings-packed.txt: loads, but the host is told that it failed; 6 notes", ""},
        {kFull, 1, "full.tdf: loads, but without 2 program images on this machine; 2 warnings, 4 notes", ""},
        {std::string("--severity error ") + kFull, 0, "machine; nothing found", ""},
        {std::string("--ignore O-MISSING ") + kFull, 0, "machine; 4 notes", ""},
        {std::string("--portable --severity warning --ignore O-MISSING,M-PATH ") + kFull, 1, "M-NOT-PINNED", ""},
        {std::string("--ignore O-NOTHING ") + kFull, 2, "", "O-NOTHING"},
        {std::string("- <") + kFull, 1, "-: loads, but without 2 program images", ""},
        {"--as capture - </dev/null", 1, "-: does not load", "-: the file is empty"},
        {std::string("/no/such/file ") + kUnknown, 4, "T-UNKNOWN-KEY line 2: \"STM_Colour\" is no property",
         "stmdcm: /no/such/file: there is no such file"},
        {std::string("/no/such/file ") + kUnknown, 4, "1 error", "2 files: 3 errors, 1 note, 1 failed"},
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
        EXPECT_THAT(result.out, HasSubstr(c.out));
        EXPECT_THAT(result.error, HasSubstr(c.error));
        EXPECT_EQ(result.error.empty(), *c.error == '\0') << result.error;
        ExpectNothingLeft();
    }
}

TEST_F(CheckTest, JsonSaysWhatTheTextSays) {
    const std::string files = std::string(kFull) + " " + kUnknown + " " STMDCM_TEST_DATA "/torn-payload.tdf /none";
    const std::string text = Run("check " + files).out;
    const std::vector<Json> documents = RunLines("check " + files, 4);
    ASSERT_EQ(documents.size(), 4U);
    EXPECT_TRUE(documents[3].at("files")[0].at("kind").is_null());
    for (const Json& document : documents) {
        EXPECT_TRUE(document.at("problems").get<bool>());
        const Json& file = document.at("files").at(0);
        EXPECT_THAT(text, HasSubstr(file.at("path").get<std::string>() + ": " + file.at("verdict").get<std::string>()));
        for (const Json& finding : file.at("findings")) {
            const auto line = [&](const char* key, const std::string& before) {
                const Json& words = finding.at(key);
                return words.is_null() ? "" : before + words.get<std::string>() + (before.empty() ? "" : "\n");
            };
            EXPECT_THAT(text, AllOf(HasSubstr(line("id", "")), HasSubstr(line("what", ": ")),
                                    HasSubstr(line("reader", "reader: ")), HasSubstr(line("next", "next: "))));
            EXPECT_TRUE(finding.at("offset").is_null() || finding.at("offset").is_string());
        }
    }
    EXPECT_EQ(RunJson("check --list").at("kinds").size(), std::size(kFindingKinds));
}

/// The commands are run as they are named, by a shell, with the words in capitals filled in.
TEST_F(CheckTest, TheNextCommandWorks) {
    const std::string device = MakeSection("DEVID", 1, "board=7\n");
    const std::string images = MakeSection("DCM_COMMON", 1, ObjectFileEntryBytes("a", "/none/a", 1));
    const std::string text = MakeSection("STMDECODERINFO", 1, AllProperties());
    const std::string odd = MakeSection("STMDECODERINFO", 1, AllProperties() + "STM_ATB_Id = 300\n");
    const std::string good = MakeSection("DCM_COMMON", 1, "") + text;
    const auto trace = [](const std::string& swallowed) {
        return MakeSection("TRACE", 1, "abc", static_cast<std::int64_t>(swallowed.size()));
    };
    const struct {
        const char* finding;
        std::string bytes;
        const char* next;  ///< what the command begins with; empty: there is none
    } cases[] = {
        {"F-NO-CAPTURE", "TDFx" + device + good, "recover "},
        {"F-NO-CAPTURE", "nothing that is a section", ""},
        {"C-TORN-HEADER", "TDF2" + device + good + "12345", "recover "},
        {"C-TORN-HEADER", "TDF2 is it", ""},
        {"C-LENGTH-ZERO", "TDF2" + device + MakeSection("Z", 1, "", -13) + good, "recover "},
        {"C-NO-DEVID", "TDF2" + trace(device) + device + good, "recover --split 24 "},
        {"C-NO-STM", "TDF2" + device + trace(good) + good, "recover --split 49 --split 71 "},
        {"C-NO-DEVID", "TDF2" + good, ""},
        {"C-NO-COMMON", "TDF2" + device, "apply "},
        {"C-NO-STM", "TDF2" + images, ""},
        {"C-EMPTY-STM", "TDF2" + device + images + MakeSection("STMDECODERINFO", 1, ""), "apply "},
        {"C-LATER-SAVES", "TDF2" + device + good + odd, "restore "},
        {"O-MISSING", "TDF2" + device + images + text, "objects "},
        {"O-MISSING", "TDF2" + images, ""},
        {"P-ATB-ID", "TDF2" + device + images + odd, "set "},
        {"P-ATB-ID", "TDF2" + device + images + odd + "12345", ""},
    };
    const std::string script = (Home() / "next").string();
    const auto shell = [&](const std::string& line) {
        WriteWhole(script, "cd " + Home().string() + "; stmdcm() { \"" STMDCM_TOOL "\" \"$@\"; }\n" + line + "\n");
        return Shell("sh " + script);
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.finding) + " " + c.next);
        WriteWhole(Home() / "it's $HOME.tdf", c.bytes);
        const Json document = Json::parse(shell("stmdcm check --json it*.tdf").out);
        std::string next = "not found";
        for (const auto& finding : document.at("files")[0].at("findings")) {
            if (finding.at("id") == c.finding) {
                next = finding.at("next").is_null() ? "" : finding.at("next").get<std::string>();
            }
        }
        EXPECT_TRUE(*c.next == '\0' ? next.empty() : next.starts_with("stmdcm " + std::string(c.next))) << next;
        if (!next.empty()) {
            const Result result = shell("touch -d @1 a; " + Filled(next));
            EXPECT_TRUE(result.status == 0 || result.status == 3) << next << "\n" << result.error;
            EXPECT_EQ(fs::remove(Home() / "NEW.tdf"), next.starts_with("stmdcm recover")) << next;
        }
    }
}

}  // namespace stmdcm
