#include "tool/commands/LiveDemoRun.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/plugin/HeldConfiguration.h"
#include "stmdcm/plugin/Installation.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/PluginSession.h"
#include "stmdcm/reading/Reading.h"
#include "tool/commands/DemoImage.h"
#include "trace/dcm/EnvironmentVariables.h"

namespace stmdcm {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

namespace {

constexpr char kCpuName[] = "Core_0/Cluster";
constexpr char kShippedScenario[] = "example.json";
constexpr std::int64_t kImageTime = 1'700'000'000;

/// A live load leaves the CPU's settings here, which would help the second manager.
void ForgetSettings() {
    const char* directory = ::getenv(kSettingsDirectoryVariable);
    for (const fs::directory_entry& entry : fs::directory_iterator(directory == nullptr ? "" : directory)) {
        fs::remove(entry);
    }
}

}  // namespace

LiveDemoResult LiveDemoRun::Run() {
    PlayTarget();
    LoadAndSave();
    LoseTarget();
    Reload();
    return std::move(m_result);
}

/// The shipped target, with program images that exist.
void LiveDemoRun::PlayTarget() {
    auto scenario = nlohmann::ordered_json::parse(std::ifstream(DataFile(kShippedScenario)));
    for (auto& cpu : scenario.at("cpus")) {
        const fs::path file = cpu.at("object_file").get<std::string>();
        const fs::path image = m_session.home.Path() / "target" / file.filename();
        WriteDemoImage(image, kImageTime);
        cpu["object_file"] = image.string();
    }
    m_result.scenario = m_session.WorkingFile(kShippedScenario);
    std::ofstream(m_result.scenario) << scenario.dump(2) << "\n";
    ::setenv(kScenarioVariable, m_result.scenario.c_str(), 1);
}

void LiveDemoRun::LoadAndSave() {
    Manager manager(m_session.plugin, kCpuName);
    m_result.live = LiveConfiguration::Load(m_session, manager);
    m_result.savedCapture = m_session.WorkingFile("live.tdf");
    fs::copy_file(m_result.live.saved.path, m_result.savedCapture);
    for (const Difference& lost : Compare(m_result.live.configuration, Read(m_result.savedCapture).configuration)) {
        m_result.problems.push_back(lost.Sentence(m_result.savedCapture));
    }
}

void LiveDemoRun::LoseTarget() {
    ForgetSettings();
    ::unsetenv(kScenarioVariable);
    fs::remove(m_result.scenario);
    if (void* library = ::dlopen(kFactoryFile, RTLD_LAZY | RTLD_NOLOAD)) {
        ::dlclose(library);
        m_result.problems.emplace_back("the trace factory is still there after its manager's end");
    }
}

void LiveDemoRun::Reload() {
    Manager manager(m_session.plugin, kCpuName);
    if (!manager.Load(m_result.savedCapture, TRACE_DATA_FILE_TDF)) {
        throw Failure(fmt::format("{}: the plug-in can't load what it saved", m_result.savedCapture));
    }
    const std::vector<ObjectFile> recorded = Read(m_result.savedCapture).configuration.objectFiles;
    m_result.reloaded = ReadConfiguration(manager);
    m_result.reloaded.objectFiles = ObjectFilesHeldBy(manager, recorded);
    m_result.differences = Compare(m_result.live.configuration, m_result.reloaded);
    if (!manager.Questions().empty()) {
        m_result.problems.emplace_back("the second manager asked for an object file");
    }
}

}  // namespace stmdcm
