#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {

using DiffTest = ConfigurationRun;

namespace {

constexpr char kSettings[] = "STM_ATB_Id = 3\nSTM_data_flip = 0\nSTM_DTC_target_clock_hz = 200000000\n";
constexpr char kSc[] =
    "{\nid=3\nname=m\njobid=2\nprobe=p\nsw=10\nsuppress=0\n#0=read\n/$\nname=sum\nformula=#0:10\nunit=MB\nofmask=1\n$/"
    "\n}\n";
constexpr char kOther[] = "{\nid=4\nname=n\njobid=2\nprobe=p\nsw=10\nsuppress=0\n}\n";
constexpr char kCpt[] = "{\ntype=CPT\nsid=17\njobid=1\ndo=130\n}\n";
constexpr char kPmi[] = "{\ntype=PMI_CMI\nname=PMI\nsw=1\n}\n";
constexpr char kPmiAgain[] = "{\ntype=PMI_CMI\nname=PMI\nsw=2\n}\n";

}  // namespace

TEST_F(DiffTest, ComparesWhatHostsLoad) {
    const std::string blocks = std::string(kSc) + kOther + kCpt + kPmi + kPmiAgain;
    const std::string base = Write("base", kSettings + blocks);
    const struct {
        std::string was, is;
        std::vector<std::string> differences;  ///< kind, item, field and both values
    } cases[] = {
        {kSettings + blocks, std::string(kSettings) + kPmi + kPmiAgain + kOther + kCpt + kSc, {}},  // another order
        {" = 3\n", "=3\r\n", {}},
        {" = 3\n", " = 4\n", {"property|STM_ATB_Id|value|3|4"}},
        {"flip = 0", "flip = 1", {"property|STM_data_flip|value|no|yes"}},
        {"200000000", "1", {"property|STM_DTC_target_clock_hz|value|200 MHz|1 Hz"}},
        {"sw=10", "sw=11", {"SC use case|job 2, module 3|sample_window|10|11"}},
        {"probe=p", "probe=x", {"SC use case|job 2, module 3|probe|p|x"}},
        {"suppress=0", "suppress=1", {"SC use case|job 2, module 3|suppress|no|yes"}},
        {"#0=read", "#0=w", {"SC use case|job 2, module 3|counters[0].text|read|w"}},
        {"ofmask=1", "ofmask=2", {"SC use case|job 2, module 3|formulas[0].output_mask|0x1|0x2"}},
        {kOther, "", {"SC use case|job 2, module 4||there|"}},
        {"do=130", "do=131", {"CPT use case|job 1, module 17|data_options|0x82|0x83"}},
        {kPmiAgain,
         "{\ntype=PMI_CMI\nname=PMI\nsw=3\n}\n{\ntype=PMI_CMI\nname=PMI\nsw=4\n}\n",
         {"PMI/CMI use case|PMI|sample_window|2|3", "PMI/CMI use case|PMI|||there"}},
    };
    for (const auto& [was, is, differences] : cases) {
        SCOPED_TRACE(is);
        std::string text = kSettings + blocks;
        const std::string arguments =
            "diff " + base + " " + Write("other", text.replace(text.find(was), was.size(), is));
        ExpectTold(arguments, {{"", differences.empty() ? 0 : 1, ""}});
        const std::string shown = Run(arguments).out;
        const Json document = RunJson(arguments);
        EXPECT_EQ(document.at("equal"), differences.empty());
        EXPECT_EQ(document.at("object_files_compared"), false);
        std::vector<std::string> found;
        for (const Json& difference : document.at("differences")) {
            const auto word = [&](const char* key) {
                return difference.at(key).is_null() ? "" : difference.at(key).get<std::string>();
            };
            found.push_back(word("kind") + "|" + word("item") + "|" + word("field") + "|" + word("left") + "|" +
                            word("right"));
            EXPECT_TRUE(HasLineWith(shown, word("item"), word("left"))) << shown;
        }
        EXPECT_EQ(found, differences);
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
