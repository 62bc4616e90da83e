#include "stmdcm/validate/Questions.h"

#include <algorithm>
#include <set>

#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {

namespace {

/// What a library does otherwise, the question that finds it, and the answer.
struct Fault {
    const char* name;
    const char* question;
    const char* verdict;
    const char* came;
};

constexpr Fault kFaults[] = {
    {"null-cpu", "life.null-cpu", "fail", "true"},
    {"destroys-null", "life.destroy-null", "crashed", "signal 6"},
    {"another-default", "property.defaults", "fail", "8"},
    {"flags-are-integers", "property.types", "fail", "2"},
    {"fills-the-text", "property.text-is-the-hosts", "fail", "Instruction_Compress"},
    {"knows-every-name", "property.unknown-is-refused", "fail", "true"},
    {"aborts", "property.unknown-is-refused", "crashed", "signal 6"},
    {"sets-the-constant", "property.constant", "fail", "true"},
    {"converts-reals", "property.real-is-not-converted", "fail", "3"},
    {"import-by-integer", "property.import-by-its-boolean", "fail", "1"},
    {"has-an-error", "life.last-error", "fail", "failed"},
    {"swaps-ids", "life.info", "fail", "13"},
    {"keeps-descriptors", "life.leaves-no-descriptor", "fail", ""},
    {"leaks", "life.leaves-no-memory", "warning", ""},
    {"leaves-files", "life.leaves-no-file", "fail", "left"},
    {"starts-a-thread", "library.starts-no-thread", "fail", "3"},
    {"starts-a-process", "library.starts-no-process", "fail", " "},
    {"closes-streams", "library.leaves-the-process-alone", "fail", "2 closed"},
    {"prints", "library.prints-nothing", "fail", "here I am"},
    {"stays-loaded", "library.unloads", "fail", "true"},
    {"sets-the-umask", "library.leaves-the-process-alone", "fail", "umask 0"},
    {"hides-the-data", "environment.variables", "fail", "(unset)"},
    {"text-always-loads", "text.final-line-feed", "fail", "true"},
    {"waits-for-pipes", "text.pipe", "timed out", "none in time"},
    {"exits", "settings.retrieve", "crashed", "the end of the process, with status 0"},
    {"swallows-logic-errors", "settings.no-variable", "fail", "no exception"},
    {"full-unnoticed", "settings.full-disk", "fail", "true"},
    {"full-unnoticed", "damage.full-disk", "fail", "true"},
    {"foreign-byte", "capture.foreign-stays", "fail", "!"},
    {"makes-captures", "capture.must-exist", "fail", "true"},
    {"needs-no-device", "capture.no-device", "fail", "true"},
    {"asks-twice", "image.confirmed", "fail", "changed"},
    {"handler-swallowed", "image.handler-throws", "fail", "no exception"},
    {"names-in-lower-case", "image.near-name", "fail", "(none)"},
    {"cleans-all", "usecase.cleaning-up", "fail", "\"\""},
    {"removes-next-job", "usecase.removing-a-job", "fail", "jobid=5"},
    {"counts-from-one", "usecase.adding-copies", "crashed", ""},
    {"scratch-not-reset", "usecase.scratch-is-reset", "fail", "old"},
    {"saves-over", "usecase.reading-appends", "fail", ""},
    {"live-always", "live.no-target", "fail", "true"},
};

class ValidateTest : public ConfigurationRun {
  protected:
    /// The wrong library under a name that chooses its fault.
    std::string Library(const std::string& fault) const {
        std::filesystem::create_symlink(STMDCM_WRONG_LIBRARY, Path(fault + ".so"));
        return Path(fault + ".so");
    }
};

void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }

std::string NameOf(const testing::TestParamInfo<Fault>& fault) {
    std::string name = std::string(fault.param.name) + "_" + fault.param.question;
    std::replace_if(
        name.begin(), name.end(), [](char letter) { return letter == '-' || letter == '.'; }, '_');
    return name;
}

class WrongLibraries : public ValidateTest, public testing::WithParamInterface<Fault> {};

}  // namespace

TEST_P(WrongLibraries, AreFoundOut) {
    const Fault& fault = GetParam();
    if (STMDCM_IS_SANITIZED == 1 && std::string(fault.name) == "leaks") {
        GTEST_SKIP() << "a sanitizer's heap can't be asked";
    }
    const char* limit = std::string(fault.verdict) == "timed out" ? "3" : "100";
    const Result result = Run(std::string("--json validate --timeout ") + limit + " --only " + fault.question + " " +
                              Library(fault.name));
    const Json answer = Json::parse(result.out).at("questions").at(0);
    EXPECT_EQ(result.status, answer.at("verdict") == "warning" ? 0 : 1) << result.error;
    EXPECT_EQ(answer.at("verdict"), fault.verdict) << answer;
    EXPECT_THAT(answer.at("came").get<std::string>(), testing::HasSubstr(fault.came));
    EXPECT_FALSE(answer.at("asked").is_null() || answer.at("expected").is_null());
    ExpectNothingLeft(1);
}

INSTANTIATE_TEST_SUITE_P(Each, WrongLibraries, testing::ValuesIn(kFaults), NameOf);

TEST_F(ValidateTest, TheRightLibrariesPass) {
    for (const std::string& library : {std::string(STMDCM_PLUGIN), Library("no-fault")}) {
        const std::string seed = std::to_string(::time(nullptr));
        SCOPED_TRACE("seed " + seed);
        const Json document = RunJson("validate --timeout 100 --seed " + seed + " " + library, 0);
        for (const Json& each : document.at("questions")) {
            EXPECT_EQ(each.at("verdict"), "pass") << each.dump(2);
        }
        EXPECT_EQ(document.at("questions").size(), validate::AllQuestions().size());
        EXPECT_EQ(document.at("failed"), false);
    }
    const std::string wrong = Run("validate --only library " STMDCM_WRONG_EXPORTS).out;
    EXPECT_THAT(wrong, testing::HasSubstr("fail library.version: "));
    EXPECT_THAT(wrong, testing::ContainsRegex("fail library.nothing-else: .*SomethingElse"));
    ExpectNothingLeft(1);
}

TEST_F(ValidateTest, EveryQuestionHasItsRuleOnAPage) {
    std::set<std::string> ids;
    for (const validate::Question* question : validate::AllQuestions()) {
        const std::string rule = question->rule;
        const std::size_t comma = rule.find(", \"");
        const std::string title = rule.substr(comma + 3, rule.size() - comma - 4);
        std::string page = Content(STMDCM_TEST_DATA "/../../" + rule.substr(0, comma));
        std::erase(page, '`');
        EXPECT_THAT(page, testing::HasSubstr("# " + title + "\n")) << question->id;
        EXPECT_TRUE(ids.insert(question->id).second) << question->id;
    }
    EXPECT_GE(ids.size(), 80U);
    EXPECT_EQ(RunJson("validate --list", 0).at("questions").size(), ids.size());
    EXPECT_EQ(RunJson("validate --list --only life,text.pipe", 0).at("questions").back().at("id"), "text.pipe");
}

TEST_F(ValidateTest, WhatIsNoLibraryIsTold) {
    ExpectTold("validate ", {{"", 2, "validate needs a FILE.so, or --list"},
                             {Path("none.so"), 1, "there is no such file"},
                             {Path(""), 1, "this is not a regular file"},
                             {"--only nosuch x.so", 2, "\"nosuch\" is no question and no group; --list lists them"}});
    const Json document = RunJson("validate " + Write("text.so", "no library"), 1);
    EXPECT_EQ(document.at("counts").at("fail"), 1);
    EXPECT_EQ(document.at("counts").at("skip"), document.at("questions").size() - 1);
    EXPECT_THAT(Run("validate " + Path("text.so")).out, testing::HasSubstr("loading the library: expected a handle"));
}

}  // namespace stmdcm
