#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {

namespace {

constexpr char kExample[] = STMDCM_TEST_DATA "/../../sim/scenarios/example.json";

}  // namespace

class LiveTest : public ConfigurationRun {
  protected:
    static std::string First(const std::string& scenario = kExample) {
        return "live --cpu Core_0/Cluster --scenario " + scenario;
    }
    /// The example with one field of it, or one more, as it is said here.
    std::string With(const char* pointer, const Json& value) const {
        Json scenario = Json::parse(Content(kExample));
        scenario[Json::json_pointer(pointer)] = value;
        return First(Write("target.json", scenario.dump()));
    }
    std::string Failing(const char* pointer, const char* failure) const { return With(pointer, {{"with", failure}}); }
};

TEST_F(LiveTest, ShowsWhatTheTargetTells) {
    const Result shown = Run(First());
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.error, "");
    const Json document = RunJson(First());
    EXPECT_EQ(document.at("cpu"), "Core_0/Cluster");
    EXPECT_TRUE(document.at("saved").is_null());
    ExpectShown(shown.out, document.at("configuration").at("properties"), "name", "text");
    ExpectShown(shown.out, document.at("configuration").at("object_files"), "path", "state");
    EXPECT_EQ(document.at("configuration").at("object_files").size(), 2U);
    for (const auto& [name, text] : {std::pair("STM_DTC_fprocess_clock_hz", "200 MHz"),
                                     {"STM_DTC_target_clock_hz", "1 GHz"},
                                     {"STM_DTC_target_pins", "8"},
                                     {"HEAD_Pointer_0", "0x00001000"},
                                     {"TWP_Protocol", "yes"}}) {
        EXPECT_TRUE(HasLineWith(shown.out, name, text)) << name;
    }
    ExpectNothingLeft();
}

TEST_F(LiveTest, ListsTheCpus) {
    const std::string list = std::string("live --scenario ") + kExample;
    EXPECT_EQ(Run(list).out, "Core_0/Cluster\nCore_1/Cluster\n");
    EXPECT_EQ(RunJson(list, 0).at("cpus").size(), 2U);
    ExpectTold("live ", {{"", 1, "the trace factory can't be loaded"},
                         {"--save x --scenario " + std::string(kExample), 2, "--save needs --cpu"},
                         {"--scenario /none", 1, "there is no such file; name a scenario"}});
    ExpectNothingLeft();
}

TEST_F(LiveTest, SavesWhatItShows) {
    ExpectTold(First(), {{" --save " + Path("new.tdf"), 0, ""}});
    const Json shown = RunJson(First() + " --save " + Path("settings") + " --force");
    EXPECT_EQ(shown.at("saved"), Path("settings"));
    EXPECT_EQ(Configuration(Path("new.tdf")), shown.at("configuration"));
    EXPECT_EQ(Configuration(Path("settings")).at("properties"), shown.at("configuration").at("properties"));
    EXPECT_EQ(Run("show " + Path("settings")).status, 0);

    const std::string before = Content(Path("new.tdf"));
    const std::string device("TDF2\x15\0\0\0\1\0\0\0\5\0\0\0DEVIDx=1\n", 25);
    const std::string empty("TDF2\x11\0\0\0\1\0\0\0\5\0\0\0DEVID", 21);
    ExpectTold(First() + " --save ", {{Path("settings"), 1, "--force"},
                                      {Path("new.tdf"), 1, "use apply"},
                                      {Write("bare.tdf", "TDF2"), 3, "no section DEVID"},
                                      {Write("device.tdf", device), 0, ""},
                                      {Write("empty.tdf", empty), 3, "the section holds nothing"},
                                      {Write("torn.tdf", device.substr(0, 15)), 1, "recover"},
                                      {Write("no.tdf", "text"), 1, "this is no capture"}});
    EXPECT_EQ(Content(Path("new.tdf")), before);
    EXPECT_EQ(Configuration(Path("device.tdf")), shown.at("configuration"));
    EXPECT_EQ(Content(Path("device.tdf")).substr(0, device.size()), device);
}

TEST_F(LiveTest, TakesItsOwnErrorLibrary) {
    const std::string tool = "LD_LIBRARY_PATH=" STMDCM_UNRELATED " " STMDCM_TOOL " ";
    const Result same = Run(Failing("/cpus/0/object_file_fails", "vornError"));
    const Result beside = Shell(tool + Failing("/cpus/0/object_file_fails", "vornError"));
    EXPECT_EQ(std::tie(beside.status, beside.out, beside.error), std::tie(same.status, same.out, same.error));
    EXPECT_EQ(Shell(tool + "demo").status, 0);
    const Result refused = Shell(tool + "demo --plugin " STMDCM_UNRELATED "/libasking_plugin.so");
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(HasLineWith(refused.error, "definedNowhere", "take " STMDCM_UNRELATED "/libvorn.so"));
}

TEST_F(LiveTest, TellsWhichAttributesFailed) {
    const std::vector<std::string> doubts =
        RunJson(std::string("live --cpu Core_1/Cluster --scenario ") + kExample).at("doubts");
    ASSERT_EQ(doubts.size(), 4U);
    EXPECT_TRUE(HasLineWith(doubts[0], "\"Device Clock Frequency\"", "STM_DTC_target_clock_hz is what it was before"));
    EXPECT_TRUE(HasLineWith(doubts[1], "\"ETB Head Present 1\"", "HEAD_Present_1 is no instead"));
    EXPECT_TRUE(HasLineWith(doubts[2], "\"ETB Head Pointer 0\"", "HEAD_Pointer_0 is what it was before"));

    const std::string silent = With("/cpus/0/attributes", Json::object());
    ExpectTold(silent, {{"", 3, "\"Trace Clock Frequency\": STM_DTC_fprocess_clock_hz is 1 instead"}});
    EXPECT_EQ(RunJson(silent).at("doubts").size(), 11U);
    const Json wrong = {{"Trace Clock Frequency", {{"type", "flag"}, {"text", "1"}}}};
    ExpectTold(With("/cpus/0/attributes", wrong), {{"", 3, "\"Trace Clock Frequency\" in a type that"}});
}

TEST_F(LiveTest, TellsWhichStepFailed) {
    std::filesystem::create_directory(Path("factory"));
    Write("factory/libTraceFactory.so", "no library");
    ExpectTold(Failing("/factory_fails", "std"), {{"", 1, "the trace factory can't be created"}});
    ExpectTold(Failing("/factory_fails", "nothing"), {{"", 1, "gives no channel server"}});
    ExpectTold(Failing("/server_fails", "int"), {{"", 1, "can't create a channel server"}});
    ExpectTold(Failing("/cpus/0/driver_fails", "vornError"), {{"", 1, "its CPUs are Core_0/Cluster, Core_1/Cluster"}});
    ExpectTold(Failing("/list_fails", "int"), {{"", 3, "does not tell the object files of all CPUs"}});
    ExpectTold(Failing("/cpus/0/object_file_fails", "vornError"), {{"", 3, "does not tell the object files"}});
    ExpectTold("live ", {{"--cpu 0 --scenario " + Write("bad.json", "{\"cpus\": 3}"), 1, "bad.json:1"},
                         {"--cpu 0 --scenario /no/such.json", 1, "/no/such.json: there is no such file"},
                         {"--cpu 0 --factory-dir " + Path("factory"), 1, "the trace factory can't be loaded: "},
                         {"--cpu 0 --factory-dir /no/such", 1, "there is no libTraceFactory.so"},
                         {std::string("--cpu Nobody --scenario ") + kExample, 1, "for a CPU \"Nobody\""},
                         {"--cpu Core_0/Cluster", 1, "--factory-dir"}});
}

}  // namespace stmdcm
