#include <algorithm>
#include <filesystem>

#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {
namespace {

using testing::HasSubstr;

class ReportTest : public ConfigurationRun {
  protected:
    /// The contents of the elements that begin with `tag`, up to `end`.
    static std::vector<std::string> Elements(const std::string& page, const std::string& tag, const std::string& end) {
        std::vector<std::string> elements;
        for (std::size_t at = 0; (at = page.find(tag, at)) != std::string::npos;) {
            at += tag.size();
            elements.push_back(page.substr(at, page.find(end, at) - at));
        }
        return elements;
    }
    static std::vector<std::string> Blocks(const std::string& page) {
        return Elements(page, R"(<script type="application/json" class="capture">)", "</script>");
    }
};

TEST_F(ReportTest, HoldsWhatTheCommandsPrint) {
    std::string names;
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(STMDCM_TEST_DATA)) {
        if (entry.path().extension() == ".tdf" || entry.path().extension() == ".txt") {
            files.push_back(entry.path());
            names += " " + files.back();
        }
    }
    for (const std::string& odd :
         {Write("zero.txt", Content(Sample("settings.txt")) + '\0'), std::string("/none.tdf")}) {
        files.push_back(odd);
        names += " " + odd;
    }
    const Result made = Run("report" + names + " -o " + Path("page.html"));
    EXPECT_EQ(made.status, 1) << "one can't be read";
    EXPECT_THAT(made.out, HasSubstr("page.html: a page about " + std::to_string(files.size()) + " files, "));
    const std::string page = Content(Path("page.html"));
    const std::vector<std::string> blocks = Blocks(page), texts = Elements(page, "<noscript><pre>", "</pre>");
    ASSERT_EQ(blocks.size(), files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        SCOPED_TRACE(files[i]);
        const Json block = Json::parse(blocks[i]);
        const bool isSettings = files[i].ends_with(".txt");
        for (const char* command : {"show", "check", "sections", "history"}) {
            const Json& part = block.at(command);
            if (!part.is_null()) {
                EXPECT_EQ(part, RunJson(command + (" " + files[i])));
            }
        }
        EXPECT_FALSE(block.at("show").is_null() || block.at("check").is_null());
        EXPECT_EQ(isSettings, block.at("sections").is_null());
        EXPECT_EQ(isSettings || block.at("sections").contains("failure"), block.at("history").is_null());
        const bool isShown = !block.at("show").contains("failure");
        EXPECT_THAT(texts[i], HasSubstr(isShown && block.at("check").at("files").at(0).at("loads") ? "Properties (26"
                                        : isShown                                                  ? "does not load"
                                                                                                   : files[i]));
        if (const Json& origins = block.at("origins"); !origins.empty()) {
            const Json& origin = origins.at(i % origins.size());
            const std::string name = origin.at("name");
            const Json statements = RunJson("explain " + files[i] + " " + name).at("items").at(0).at("statements");
            const auto isInForce = [](const Json& each) { return each.at("standing") == "in force"; };
            const Json statement = *std::find_if(statements.begin(), statements.end(), isInForce);
            for (const char* key : {"source", "offset", "line"}) {
                EXPECT_EQ(origin.at(key), statement.at(key));
            }
        }
    }
    const std::string lines = Run("--json report" + names).out;
    for (const char* jobs : {"", " -j 3"}) {
        EXPECT_EQ(Run("--json report" + names + jobs).out, lines);
        const std::string other = Path("other.html");
        EXPECT_EQ(Run("report --force" + names + jobs + " -o " + other).status, 1);
        EXPECT_EQ(Blocks(Content(other)), blocks);
        EXPECT_EQ(Blocks(Run("report" + names + jobs + " -o -").out), blocks);
    }
}

TEST_F(ReportTest, IsWrittenWholeAndOverNoInput) {
    const std::string one = Copy("full.tdf"), list = Write("list", "\n" + one + "\n/none.tdf\n"),
                      old = Write("old.html", "old");
    const std::string before = Content(one);
    ExpectTold("report ",
               {{one, 2, "report needs -o OUT, or --json"},
                {"--json " + one + " -o x", 2, "leave -o out"},
                {one + " -o " + old, 1, "the file is there already"},
                {one + " --force -o " + one, 1, "this is the input"},
                {"--files-from " + list + " --force -o " + one, 1, "this is the input"},
                {"--files-from " + list + " -j 2 --force -o " + one, 1, "this is the input"},
                {"--files-from /none --force -o " + old, 1, "/none: the list of files can't be opened"},
                {"/none.tdf /none2.tdf --force -o " + old, 1, "nothing could be read, so no page was written"},
                {one + " --force -o /dev/full", 1, "this is not a regular file"}});
    EXPECT_EQ(Content(one), before);
    EXPECT_EQ(Content(old), "old");
    EXPECT_EQ(Run("report --files-from " + list + " --force -o " + old).status, 1);
    EXPECT_THAT(Content(old), testing::EndsWith("</html>\n"));
}

TEST_F(ReportTest, NoNameBecomesMarkup) {
    const std::string hostile = "</script><script>alert(1)</script><!--\xE2\x80\xA8\xE2\x80\xAE&'\"\xFF.tdf";
    const std::string names = Write(hostile, Content(Sample("full.tdf"))) + '\0' + "a</noscript><b>" + '\0';
    const std::string page = Run("report -o - -0 --files-from " + Write("names", names)).out;
    EXPECT_EQ(Elements(page, "<script", "").size(), 4U) << "about, two captures, the viewer";
    EXPECT_EQ(Elements(page, "</noscript>", "").size(), 3U);
    EXPECT_THAT(page, testing::Not(testing::ContainsRegex("\xE2\x80[\xA8\xAE]")));
    const std::string shown = Json::parse(Blocks(page).at(0)).at("file");
    EXPECT_THAT(shown, HasSubstr("</script><script>alert(1)</script><!--\xE2\x80\xA8\xE2\x80\xAE&'\"\xEF\xBF\xBD.tdf"));
    EXPECT_THAT(page, HasSubstr("&lt;/script&gt;&lt;script&gt;alert(1)"));
    EXPECT_THAT(page, HasSubstr("a&lt;/noscript&gt;&lt;b&gt;: "));
}

}  // namespace
}  // namespace stmdcm
