#include <dlfcn.h>
#include <fmt/format.h>

#include <cstdlib>
#include <map>
#include <stdexcept>

#include "host/vorn/vornError.h"
#include "stmdcm/plugin/Installation.h"
#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"

namespace stmdcm::validate {

using namespace Zu::Wep::Trace;

namespace {

constexpr char kThrown[] = R"({"with": "vornError"})";

/// A target of the CPU Core_0/Cluster, with these attributes; `more` are fields of the scenario, each with its comma.
void Play(Host& host, const std::string& attributes, const std::string& more = "", const std::string& ofCpu = "") {
    if (!host.HasTarget()) {
        Skip("the simulated trace factory is not installed");
    }
    const std::string scenario = host.Write(
        "target.json",
        fmt::format(R"({{{}"cpus": [{{"name": "{}", {}"attributes": {{{}}}}}]}})", more, kCpuName, ofCpu, attributes));
    ::setenv(kScenarioVariable, scenario.c_str(), 1);
    ::setenv("STMDCM_SCENARIO_LOG", host.Path("calls").c_str(), 1);
}

std::string Calls(const Host& host) { return Host::Read(host.Path("calls")); }

/// An attribute, its property, and what becomes of that for an answer of type flag, integer, double, or another, and
/// where there is none: K it stays, I the text as an integer, D as a double, B as a flag, 0 or 1.
struct Row {
    const char* attribute;
    const char* property;
    const char* outcomes;
};
constexpr Row kRows[] = {
    {"Trace Clock Frequency", "STM_DTC_fprocess_clock_hz", "KIDK1"},
    {"Device Clock Frequency", "STM_DTC_target_clock_hz", "KDDK1"},
    {"Trace Data Pin Size ", "STM_DTC_target_pins", "KIKKK"},
    {"ETB Data Flip Needed", "STM_data_flip", "B0000"},
    {"ETB Head Present 0", "HEAD_Present_0", "0B000"},
    {"ETB Head Present 1", "HEAD_Present_1", "0B000"},
    {"ETB Head Pointer 0", "HEAD_Pointer_0", "KIKKK"},
    {"ETB Head Pointer 1", "HEAD_Pointer_1", "KIKKK"},
    {"Buffer Wrapped", "STM_Buffer_Wrapped", "BKKK0"},
    {"STM_VornLib_Import", "STM_VornLib_Import", "B0000"},
    {"TWP Source", "TWP_Protocol", "BKKK0"},
};

/// Every attribute gives "1234.5e-1" in that type; each property was 0 before.
void ExpectOutcomes(Host& host, std::size_t kind, const std::string& answer) {
    std::string attributes;
    std::string before;
    for (const Row& row : kRows) {
        attributes += fmt::format(R"({}"{}": {{{}, "text": "1234.5e-1"}})", attributes.empty() ? "" : ", ",
                                  row.attribute, answer);
        before += fmt::format("{} = 0\n", row.property);
    }
    Play(host, attributes);
    const Subject subject(host);
    host.Write("home/.ZU-trace/settings/Core_0-Cluster-STMCfg.txt.dcm", before);
    Expect("the live load", subject->LoadConfigurationLive(), true);
    const std::map<char, std::int32_t> values{{'K', 0}, {'I', 1234}, {'D', 123}, {'B', 1}, {'0', 0}, {'1', 1}};
    for (const Row& row : kRows) {
        Expect(fmt::format("{} when \"{}\" answers {}", row.property, row.attribute, answer),
               subject.Number(row.property), values.at(row.outcomes[kind]));
    }
}

/// A load from a target that fails so is false; one from the same target without the failure is true.
void ExpectTriedAgain(Host& host, const std::string& failures) {
    Subject subject(host);
    Play(host, "", failures);
    Expect("the first live load", subject->LoadConfigurationLive(), false);
    Play(host, R"("Trace Data Pin Size ": {"type": "integer", "text": "16"})");
    Expect("the next live load", subject->LoadConfigurationLive(), true);
    Expect("STM_DTC_target_pins", subject.Number("STM_DTC_target_pins"), 16);
    subject.End();
}

constexpr Question kLiveTable[] = {
    {"live.asks-once-each", "a live load asks for the eleven attributes in their order, and gives all back", kLiveRule,
     [](Host& host) {
         Play(host, "");
         Subject subject(host);
         Expect("the live load", subject->LoadConfigurationLive(), true);
         subject.End();
         std::string expected = fmt::format(
             "library loaded\nCreateTraceFactory\nCreateChannelServer 1\n"
             "GetChannelDriver \"{}\"\n",
             kCpuName);
         for (const Row& row : kRows) {
             expected += fmt::format("GetAttribute \"{}\" \"{}\" throws\n", kCpuName, row.attribute);
         }
         Expect("the calls", Calls(host), expected + "DestroyChannelServer 0\nDestroyTraceFactory\nlibrary unloaded\n");
     }},
    {"live.flags", "answers of the type flag set what takes flags", kLiveRule,
     [](Host& host) { ExpectOutcomes(host, 0, R"("type": "flag")"); }},
    {"live.integers", "answers of the type integer set what takes integers", kLiveRule,
     [](Host& host) { ExpectOutcomes(host, 1, R"("type": "integer")"); }},
    {"live.doubles", "answers of the type double set what takes doubles", kLiveRule,
     [](Host& host) { ExpectOutcomes(host, 2, R"("type": "double")"); }},
    {"live.other-types", "answers of another type leave the property, or make it false", kLiveRule,
     [](Host& host) { ExpectOutcomes(host, 3, R"("type": -3)"); }},
    {"live.failed-query", "a query that throws, whatever it throws, falls back, and the next is asked", kLiveRule,
     [](Host& host) {
         for (const char* thrown : {"vornError", "std", "int"}) {
             ExpectOutcomes(host, 4, fmt::format(R"("fails": {{"with": "{}"}})", thrown));
         }
     }},
    {"live.no-type", "a query that sets no type has the type and text of the one before", kLiveRule,
     [](Host& host) {
         Play(host, R"("Trace Clock Frequency": {"text": "5"},
                       "Device Clock Frequency": {"type": "integer", "text": "7"},
                       "Trace Data Pin Size ": {"text": "9"},
                       "ETB Data Flip Needed": {"type": "flag", "text": "1", "fails": {"with": "nothing"}},
                       "ETB Head Present 0": {},
                       "ETB Head Pointer 0": {"text": "11"})");
         const Subject subject(host);
         subject->LoadConfigurationLive();
         for (const auto& [property, number] : {std::pair("STM_DTC_fprocess_clock_hz", 1),
                                                {"STM_DTC_target_clock_hz", 7},
                                                {"STM_DTC_target_pins", 9},
                                                {"STM_data_flip", 0},
                                                {"HEAD_Present_0", 1},
                                                {"HEAD_Pointer_0", 11}}) {
             Expect(property, subject.Number(property), number);
         }
     }},
    {"live.reads-settings-first", "a live load begins with the CPU's settings file, use cases and all", kLifeRule,
     [](Host& host) {
         Play(host, "");
         const Subject subject(host);
         host.Write("home/.ZU-trace/settings/Core_0-Cluster-STMCfg.txt.dcm",
                    std::string("STM_ATB_Id = 42\n") + kUsecaseBlocks);
         Expect("the live load", subject->LoadConfigurationLive(), true);
         Expect("STM_ATB_Id", subject.Number("STM_ATB_Id"), 42);
         Expect("the number of SC use cases", subject.Sc().GetNumUsecases(), 2U);
     }},
    {"live.saves-settings", "it ends with saving that file", kLiveRule,
     [](Host& host) {
         Play(host, R"("Trace Data Pin Size ": {"type": "integer", "text": "16"})");
         const Subject subject(host);
         subject->LoadConfigurationLive();
         const std::string saved = Host::Read(Host::Settings("Core_0-Cluster-STMCfg.txt.dcm"));
         ExpectPart("the file", saved, "STM_DTC_target_pins = 16\n");
         Expect("the file", saved, subject.Text());
     }},
    {"live.no-target", "without a target that can be played the load is false, and the settings are loaded", kLiveRule,
     [](Host& host) {
         Play(host, "");
         ::unsetenv(kScenarioVariable);
         const Subject subject(host);
         host.Write("home/.ZU-trace/settings/Core_0-Cluster-STMCfg.txt.dcm", "STM_ATB_Id = 42\n");
         Expect("the live load", subject->LoadConfigurationLive(), false);
         Expect("STM_ATB_Id", subject.Number("STM_ATB_Id"), 42);
     }},
    {"live.factory-fails", "a factory that can't be made, however, makes the load false; the next tries again",
     kLiveRule,
     [](Host& host) {
         for (const char* with : {"vornError", "std", "int", "nothing"}) {
             ExpectTriedAgain(host, fmt::format(R"("factory_fails": {{"with": "{}"}},)", with));
         }
     }},
    {"live.server-fails", "so does a channel server; the next load asks the same factory", kLiveRule,
     [](Host& host) {
         for (const char* with : {"vornError", "std", "int", "nothing"}) {
             Play(host, "", fmt::format(R"("server_fails": {{"with": "{}", "times": 1}},)", with));
             Subject subject(host);
             Expect(fmt::format("the live load when the server fails with {}", with), subject->LoadConfigurationLive(),
                    false);
             Expect("the next live load", subject->LoadConfigurationLive(), true);
             subject.End();
             ExpectPart("the calls", Calls(host), "DestroyChannelServer 0\nDestroyTraceFactory\nlibrary unloaded\n");
             Host::Remove(host.Path("calls"));
         }
     }},
    {"live.factory-without-a-server", "a factory that never gave a server is not given back", kLiveRule,
     [](Host& host) {
         Play(host, "", fmt::format(R"("server_fails": {},)", kThrown));
         Subject subject(host);
         subject->LoadConfigurationLive();
         subject.End();
         ExpectPart("the calls", Calls(host), "CreateChannelServer 1 throws\nlibrary unloaded with 1 factories left\n");
     }},
    {"live.driver-fails", "without a channel driver the load is true, and the CPU keeps its settings", kLiveRule,
     [](Host& host) {
         for (const char* with : {"vornError", "std", "int", "nothing"}) {
             Play(host, R"("Trace Data Pin Size ": {"type": "integer", "text": "16"})", "",
                  fmt::format(R"("driver_fails": {{"with": "{}"}}, )", with));
             const Subject subject(host);
             host.Write("home/.ZU-trace/settings/Core_0-Cluster-STMCfg.txt.dcm", "STM_ATB_Id = 42\n");
             Expect(fmt::format("the live load when the driver fails with {}", with), subject->LoadConfigurationLive(),
                    true);
             Expect("STM_ATB_Id", subject.Number("STM_ATB_Id"), 42);
             Expect("STM_DTC_target_pins", subject.Number("STM_DTC_target_pins"), 4);
         }
     }},
    {"live.other-cpu", "a CPU that the target does not know keeps its settings, too", kLiveRule,
     [](Host& host) {
         Play(host, R"("Trace Data Pin Size ": {"type": "integer", "text": "16"})");
         const Subject subject(host, "nobody");
         Expect("the live load", subject->LoadConfigurationLive(), true);
         Expect("STM_DTC_target_pins", subject.Number("STM_DTC_target_pins"), 4);
     }},
    {"live.driver-stays", "a driver of an earlier load serves when there is none this time", kLiveRule,
     [](Host& host) {
         Play(host, R"("ETB Head Pointer 0": {"type": "integer", "text": "7", "fails": {"with": "int", "times": 1}})");
         const Subject subject(host);
         Expect("the first live load", subject->LoadConfigurationLive(), true);
         Expect("HEAD_Pointer_0, whose query failed", subject.Number("HEAD_Pointer_0"), 0);
         Expect("the second live load", subject->LoadConfigurationLive(), true);
         Expect("HEAD_Pointer_0, whose query did not", subject.Number("HEAD_Pointer_0"), 7);
     }},
    {"live.object-files", "GetObjectFile brings the list up to date from the target", kImageFindingRule,
     [](Host& host) {
         const std::string image = host.WriteDated("a.out", 100);
         Play(host, "", "", fmt::format(R"("object_file": "{}", )", image));
         const Subject subject(host);
         Expect("the file before there is a connection", subject.Image(kCpuName), "(none)");
         subject->LoadConfigurationLive();
         Expect("the file", subject.Image(kCpuName), image);
         Expect("what is kept", subject.Images(), std::vector<std::string>{"Core_0/Cluster a.out 100"});
     }},
    {"live.object-file-fails", "a vornError about one file reaches nobody, and anything else reaches the host",
     kLiveRule,
     [](Host& host) {
         const auto connected = [&](const char* with) {
             Play(host, "", "", fmt::format(R"("object_file_fails": {{"with": "{}", "times": 1}}, )", with));
             Subject subject(host);
             subject->LoadConfigurationLive();
             return subject;
         };
         Expect("the file when it fails with vornError", connected("vornError").Image(kCpuName), "(none)");
         const Subject subject = connected("std");
         ExpectThrow<std::runtime_error>(
             "asking when it fails with another", [&] { subject.Image(kCpuName); }, "the factory's std::runtime_error");
         Expect("asking once more", subject.Image(kCpuName), "");
     }},
    {"live.list-fails", "what listing the CPUs throws reaches the host", kLiveRule,
     [](Host& host) {
         Play(host, "", fmt::format(R"("list_fails": {},)", kThrown));
         const Subject subject(host);
         subject->LoadConfigurationLive();
         ExpectThrow<Zu::Wep::Vorn::vornErrorIF>(
             "GetObjectFile", [&] { subject.Image(kCpuName); }, "the factory's vornError");
     }},
    {"live.end-fails", "a server that can't be destroyed ends no manager's end, and the factory goes all the same",
     kLiveRule,
     [](Host& host) {
         for (const char* with : {"vornError", "int"}) {
             Play(host, "", fmt::format(R"("server_end_fails": {{"with": "{}"}},)", with));
             Subject subject(host);
             subject->LoadConfigurationLive();
             subject.End();
             ExpectPart("the calls", Calls(host), "DestroyChannelServer 0 throws\nDestroyTraceFactory");
             Host::Remove(host.Path("calls"));
         }
     }},
    {"live.each-its-own", "every manager has a factory of its own, and one's end is not another's", kLiveRule,
     [](Host& host) {
         Play(host, "");
         Subject one(host);
         const Subject other(host, "other");
         one->LoadConfigurationLive();
         other->LoadConfigurationLive();
         one.End();
         Expect("a live load of the other", other->LoadConfigurationLive(), true);
     }},
    {"live.leaves-nothing", "when its manager ends the factory's library goes, and no descriptor stays", kLiveRule,
     [](Host& host) {
         Play(host, "");
         const auto load = [&] { Subject(host)->LoadConfigurationLive(); };
         load();
         const std::size_t before = Held::Descriptors();
         load();
         Expect("descriptors afterwards", Held::Descriptors(), before);
         Expect("whether the library is still loaded", ::dlopen(kFactoryFile, RTLD_NOW | RTLD_NOLOAD) != nullptr,
                false);
     }},
};

}  // namespace

std::span<const Question> LiveQuestions() { return kLiveTable; }

}  // namespace stmdcm::validate
