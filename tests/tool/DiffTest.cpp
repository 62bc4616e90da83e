#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {

using DiffTest = ConfigurationRun;

namespace {

constexpr char kSettings[] = "STM_ATB_Id = 3\n";
constexpr char kFirst[] = "{\nid=3\nname=m\njobid=2\nprobe=p\nsw=10\nsuppress=0\n}\n";
constexpr char kSecond[] = "{\nid=4\nname=n\njobid=2\nprobe=p\nsw=10\nsuppress=0\n}\n";

}  // namespace

TEST_F(DiffTest, ComparesWhatHostsLoad) {
    const std::string base = Write("base", std::string(kSettings) + kFirst + kSecond);
    std::string window = kFirst;
    window.replace(window.find("sw=10"), 5, "sw=11");
    const struct {
        std::string text;
        int status;
        std::string difference;  ///< item, field and both values; or nothing
    } cases[] = {
        {std::string("STM_ATB_Id=3\r\n") + kSecond + kFirst, 0, ""},  // other bytes, another order
        {std::string("STM_ATB_Id = 4\n") + kFirst + kSecond, 1, "STM_ATB_Id|value|3|4"},
        {kSettings + window + kSecond, 1, "job 2, module 3|sample_window|10|11"},
        {std::string(kSettings) + kSecond, 1, "job 2, module 3||there|"},
    };
    for (const auto& c : cases) {
        const std::string arguments = "diff " + base + " " + Write("other", c.text);
        ExpectTold(arguments, {{"", c.status, ""}});
        const Result shown = Run(arguments);
        const Json document = RunJson(arguments);
        EXPECT_EQ(document.at("equal"), c.status == 0);
        EXPECT_EQ(document.at("object_files_compared"), false);
        ASSERT_EQ(document.at("differences").size(), c.difference.empty() ? 0U : 1U);
        for (const Json& difference : document.at("differences")) {
            const auto text = [&](const char* key) {
                return difference.at(key).is_null() ? "" : difference.at(key).get<std::string>();
            };
            EXPECT_EQ(text("item") + "|" + text("field") + "|" + text("left") + "|" + text("right"), c.difference);
            EXPECT_TRUE(HasLineWith(shown.out, text("item"), text("left"))) << shown.out;
        }
    }
}

TEST_F(DiffTest, ObjectFilesAreComparedBetweenCapturesAlone) {
    const std::string capture = Sample("full.tdf");
    ASSERT_EQ(Run("convert " + capture + " " + Path("settings")).status, 3);
    ASSERT_EQ(Run("convert " + Path("settings") + " " + Path("bare.tdf")).status, 0);
    const Result settings = Run("diff " + capture + " " + Path("settings"));
    EXPECT_EQ(settings.status, 0);
    EXPECT_NE(settings.out.find("object files are not compared"), std::string::npos);
    const Json captures = RunJson("diff " + capture + " " + Path("bare.tdf"));
    EXPECT_TRUE(captures.at("object_files_compared").get<bool>());
    ASSERT_EQ(captures.at("differences").size(), 2U);
    EXPECT_EQ(captures.at("differences")[0].at("kind"), "object file");
}

TEST_F(DiffTest, EqualityIsDoubtfulWhereNotAllWasRead) {
    const std::string base = Write("base", kSettings);
    const std::string doubtful = Write("doubtful", std::string(kSettings) + "Unknown = 1\n");
    ExpectTold("diff ", {{base + " " + base, 0, ""},
                         {base + " " + doubtful, 3, "\"Unknown\" is no property"},
                         {base + " /no/such", 4, "/no/such: there is no such file"},
                         {Sample("no-devid.tdf") + " " + base, 4, "no section DEVID"},
                         {Sample("empty-devid.tdf") + " " + base, 4, "the section holds nothing"},
                         {base, 2, "RIGHT is required"}});
}

}  // namespace stmdcm
