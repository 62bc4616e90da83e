// Any bytes as a scenario file: refused with a place in it, or read to what any other layout of the same JSON gives.

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "fuzz/Support.h"
#include "host/vorn/vornError.h"
#include "sim/ScenarioReader.h"

using namespace stmdcm_sim;
using stmdcm_fuzz::Require;

namespace {

/// Nothing when it is refused.
std::unique_ptr<Scenario> Read(const std::string& text) {
    static const std::string path = stmdcm_fuzz::Scratch() / "target.json";
    stmdcm_test::WriteWhole(path, text);
    try {
        return ReadScenario(path);
    } catch (const Zu::Wep::Vorn::vornError& error) {
        const std::string message = error.what();
        Require(message.starts_with(path + ":"), "a refusal names the file");
        const auto lines = std::count(text.begin(), text.end(), '\n') + 1;
        const long line = std::strtol(message.c_str() + path.size() + 1, nullptr, 10);
        Require(1 <= line && line <= lines, "a refusal names a line of the file");
        return nullptr;
    }
}

constexpr int kCalls = 3;

/// Everything that the first calls get, but the failures, which tell nothing of themselves.
std::string Told(const Scenario& scenario) {
    nlohmann::json told = {scenario.delay.count()};
    for (ScenarioCpu cpu : scenario.cpus) {
        nlohmann::json attributes = nlohmann::json::object();
        for (auto& [name, answers] : cpu.attributes) {
            for (int call = 0; call < kCalls && !answers.IsEmpty(); ++call) {
                const AttributeAnswer& answer = answers.Next();
                attributes[name].push_back({answer.type.has_value(), answer.type.value_or(0), answer.text.has_value(),
                                            answer.text.value_or("")});
            }
        }
        nlohmann::json files = nlohmann::json::array();
        for (int call = 0; call < kCalls && !cpu.objectFiles.IsEmpty(); ++call) {
            files.push_back(cpu.objectFiles.Next());
        }
        told.push_back({cpu.name, files, attributes});
    }
    return told.dump();
}

void CheckRules(const Scenario& scenario) {
    std::set<std::string> names;
    for (const ScenarioCpu& cpu : scenario.cpus) {
        Require(!cpu.name.empty() && cpu.name.find('\0') == std::string::npos, "a CPU has a name");
        Require(names.insert(cpu.name).second, "no two CPUs have one name");
    }
    Require(scenario.delay.count() >= 0 && scenario.delay.count() <= 60'000, "a delay of at most a minute");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = stmdcm_fuzz::Text(data, size);
    if (const auto scenario = Read(text)) {
        CheckRules(*scenario);
        for (const int indent : {-1, 2}) {
            const auto again = Read(nlohmann::json::parse(text).dump(indent));
            Require(again != nullptr && Told(*again) == Told(*scenario), "the layout of the JSON means nothing");
        }
    }
    return 0;
}
