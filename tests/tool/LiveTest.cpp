#include <filesystem>

#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {

namespace fs = std::filesystem;

namespace {

constexpr char kExample[] = STMDCM_TEST_DATA "/../../sim/scenarios/example.json";
constexpr char kFirst[] = " --cpu Core_0/Cluster --scenario ";

}  // namespace

class LiveTest : public ConfigurationRun {
  protected:
    static std::string First(const std::string& scenario = kExample) { return std::string("live") + kFirst + scenario; }
    /// The example with a top field more.
    std::string Failing(const char* field, const char* failure) const {
        Json scenario = Json::parse(Content(kExample));
        scenario[field] = {{"with", failure}};
        return Write(std::string(field) + failure + ".json", scenario.dump());
    }
    /// The example with the first CPU's field instead.
    std::string WithFirstCpu(const char* field, const Json& value) const {
        Json scenario = Json::parse(Content(kExample));
        scenario["cpus"][0][field] = value;
        return Write(std::string(field) + ".json", scenario.dump());
    }
};

TEST_F(LiveTest, ShowsWhatTheTargetTells) {
    const Result shown = Run(First());
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.error, "");
    const Json document = RunJson(First());
    EXPECT_EQ(document.at("cpu"), "Core_0/Cluster");
    EXPECT_TRUE(document.at("saved").is_null());
    for (const Json& property : document.at("configuration").at("properties")) {
        EXPECT_TRUE(HasLineWith(shown.out, property.at("name"), property.at("text"))) << property;
    }
    const std::pair<const char*, const char*> told[] = {{"STM_DTC_fprocess_clock_hz", "200 MHz"},
                                                        {"STM_DTC_target_clock_hz", "1 GHz"},
                                                        {"STM_DTC_target_pins", "8"},
                                                        {"HEAD_Pointer_0", "0x00001000"},
                                                        {"TWP_Protocol", "yes"}};
    for (const auto& [name, text] : told) {
        EXPECT_TRUE(HasLineWith(shown.out, name, text)) << name;
    }
    for (const Json& file : document.at("configuration").at("object_files")) {
        EXPECT_TRUE(HasLineWith(shown.out, file.at("path"), file.at("state"))) << file;
    }
    EXPECT_EQ(document.at("configuration").at("object_files").size(), 2U);
    ExpectNothingLeft();
}

TEST_F(LiveTest, SavesWhatItShows) {
    ExpectTold(First() + " --save " + Path("new.tdf"), 0, "");
    const Json shown = RunJson(First() + " --save " + Path("settings") + " --force");
    EXPECT_EQ(shown.at("saved"), Path("settings"));
    EXPECT_EQ(Configuration(Path("new.tdf")), shown.at("configuration"));
    EXPECT_EQ(Configuration(Path("settings")).at("properties"), shown.at("configuration").at("properties"));
    EXPECT_EQ(Run("show " + Path("settings")).status, 0);

    const std::string before = Content(Path("new.tdf"));
    const std::string device("TDF2\x15\0\0\0\1\0\0\0\5\0\0\0DEVIDx=1\n", 25);
    const std::string empty("TDF2\x11\0\0\0\1\0\0\0\5\0\0\0DEVID", 21);
    for (const ToldCase& c : std::vector<ToldCase>{
             {Path("settings"), 1, "--force"},
             {Path("new.tdf"), 1, "use apply"},
             {Write("bare.tdf", "TDF2"), 3, "no section DEVID"},
             {Write("device.tdf", device), 0, ""},
             {Write("empty.tdf", empty), 3, "the section holds nothing"},
             {Write("torn.tdf", device.substr(0, 15)), 1, "recover"},
             {Write("no.tdf", "text"), 1, "this is no capture"},
         }) {
        ExpectTold(First() + " --save " + c.arguments, c.status, c.sentence);
    }
    EXPECT_EQ(Content(Path("new.tdf")), before);
    EXPECT_EQ(Configuration(Path("device.tdf")), shown.at("configuration"));
    EXPECT_EQ(Content(Path("device.tdf")).substr(0, device.size()), device);
}

TEST_F(LiveTest, TellsWhichAttributesFailed) {
    const Json document = RunJson(std::string("live --cpu Core_1/Cluster --scenario ") + kExample);
    const std::vector<std::string> doubts = document.at("doubts");
    ASSERT_EQ(doubts.size(), 4U);
    EXPECT_TRUE(HasLineWith(doubts[0], "\"Device Clock Frequency\"", "STM_DTC_target_clock_hz is what it was before"));
    EXPECT_TRUE(HasLineWith(doubts[1], "\"ETB Head Present 1\"", "HEAD_Present_1 is no instead"));
    EXPECT_TRUE(HasLineWith(doubts[2], "\"ETB Head Pointer 0\"", "HEAD_Pointer_0 is what it was before"));

    const std::string silent = WithFirstCpu("attributes", Json::object());
    ExpectTold(First(silent), 3, "\"Trace Clock Frequency\": STM_DTC_fprocess_clock_hz is 1 instead");
    EXPECT_EQ(RunJson(First(silent)).at("doubts").size(), 11U);
    const Json wrong = {{"Trace Clock Frequency", {{"type", "flag"}, {"text", "1"}}}};
    ExpectTold(First(WithFirstCpu("attributes", wrong)), 3, "\"Trace Clock Frequency\" in a type that");
}

TEST_F(LiveTest, TellsWhichStepFailed) {
    const std::string other = Path("factory");
    fs::create_directory(other);
    std::ofstream(other + "/libTraceFactory.so") << "no library";
    const ToldCase cases[] = {
        {First(Failing("factory_fails", "std")), 1, "the trace factory can't be created"},
        {First(Failing("factory_fails", "nothing")), 1, "gives no channel server"},
        {First(Failing("server_fails", "int")), 1, "can't create a channel server"},
        {First(WithFirstCpu("driver_fails", {{"with", "vornError"}})), 1,
         "its CPUs are Core_0/Cluster, Core_1/Cluster"},
        {First(Failing("list_fails", "int")), 3, "does not tell the object files of all CPUs"},
        {First(WithFirstCpu("object_file_fails", {{"with", "vornError"}})), 3, "does not tell the object files"},
        {First(Write("bad.json", "{\"cpus\": 3}")), 1, "bad.json:1"},
        {First("/no/such.json"), 1, "/no/such.json: there is no such file"},
        {First() + " --factory-dir " + other, 1, "the trace factory can't be loaded: "},
        {First() + " --factory-dir /no/such", 1, "there is no libTraceFactory.so"},
        {std::string("live --cpu Nobody --scenario ") + kExample, 1, "for a CPU \"Nobody\""},
        {"live --cpu Core_0/Cluster", 1, "--factory-dir"},
        {std::string("live --scenario ") + kExample, 2, "--cpu is required"},
    };
    for (const ToldCase& c : cases) {
        ExpectTold(c.arguments, c.status, c.sentence);
    }
}

}  // namespace stmdcm
