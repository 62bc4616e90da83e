// Reading and writing a configuration, against the same values as JSON.

#include <benchmark/benchmark.h>

#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "trace/dcm/StmDeviceConfigManager.h"

namespace {

using Json = nlohmann::json;
using Zu::Wep::Trace::CPUInfo;
using Zu::Wep::Trace::StmDeviceConfigManager;

/// The sample's blocks a hundred times over: a large but possible set of use cases.
std::string LargeText() {
    std::ifstream file(STMDCM_BENCH_DATA "/settings.txt");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const auto blocks = text.find("{\n");
    std::string large = text.substr(0, blocks);
    for (int i = 0; i < 100; ++i) {
        large += text.substr(blocks);
    }
    return large;
}

/// The same lines as JSON: an object of properties, an array of blocks.
std::string AsJson(const std::string& text) {
    Json root = {{"properties", Json::object()}, {"blocks", Json::array()}};
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        const auto equals = line.find('=');
        if (line == "{") {
            root["blocks"].push_back(Json::object());
        } else if (equals != std::string::npos) {
            Json& target = root["blocks"].empty() ? root["properties"] : root["blocks"].back();
            target[line.substr(0, equals)] = line.substr(equals + 1);
        }
    }
    return root.dump();
}

const std::string& Path(const std::string& name, const std::string& content) {
    static std::map<std::string, std::string> paths;
    auto [found, isNew] = paths.try_emplace(name, "/tmp/stmdcm-bench-" + name);
    if (isNew) {
        std::ofstream(found->second) << content;
    }
    return found->second;
}

StmDeviceConfigManager& Manager() {
    static CPUInfo cpu{"bench", 0, 0, 0};
    static StmDeviceConfigManager manager(&cpu, nullptr);
    return manager;
}

void LoadOurs(benchmark::State& state) {
    const std::string& path = Path("settings.txt", LargeText());
    for (auto _ : state) {
        benchmark::DoNotOptimize(Manager().LoadConfiguration(path, Zu::Wep::Trace::TRACE_DATA_FILE_LOCAL));
    }
}

void LoadJson(benchmark::State& state) {
    const std::string& path = Path("settings.json", AsJson(LargeText()));
    for (auto _ : state) {
        std::ifstream file(path);
        benchmark::DoNotOptimize(Json::parse(file));
    }
}

void WriteOurs(benchmark::State& state) {
    Manager().LoadConfiguration(Path("settings.txt", LargeText()), Zu::Wep::Trace::TRACE_DATA_FILE_LOCAL);
    for (auto _ : state) {
        std::string text;
        Manager().OutputParametersToBuffer(text);
        Manager().GetUsecaseRecord()->SaveAllRecords(text);
        Manager().GetCTUsecaseRecord()->SaveAllRecords(text);
        Manager().GetPMIUsecaseRecord()->SaveAllRecords(text);
        benchmark::DoNotOptimize(text);
    }
}

void WriteJson(benchmark::State& state) {
    const Json root = Json::parse(AsJson(LargeText()));
    for (auto _ : state) {
        benchmark::DoNotOptimize(root.dump());
    }
}

BENCHMARK(LoadOurs)->Name("load 500 use cases/ours");
BENCHMARK(LoadJson)->Name("load 500 use cases/peer: nlohmann-json, parsed but not applied");
BENCHMARK(WriteOurs)->Name("write 500 use cases/ours");
BENCHMARK(WriteJson)->Name("write 500 use cases/peer: nlohmann-json");

}  // namespace
