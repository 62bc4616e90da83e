#include <dlfcn.h>
#include <fmt/format.h>
#include <stdlib.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/DirectoryNames.h"
#include "stmdcm/plugin/HeldConfiguration.h"
#include "stmdcm/plugin/Installation.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/WorkingFile.h"
#include "tool/commands/DemoRun.h"
#include "trace/dcm/EnvironmentVariables.h"

namespace stmdcm {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

namespace {

constexpr char kShippedScenario[] = "example.json";
constexpr std::int64_t kImageTime = 1'700'000'000;

nlohmann::ordered_json ShippedScenario() {
    const fs::path file = DataFile(kShippedScenario);
    try {
        return nlohmann::ordered_json::parse(ReadWorkingFile(file));
    } catch (const nlohmann::json::exception&) {
        throw Failure(file, "the file that belongs to this program is damaged; install it again");
    }
}

/// A live load leaves the CPU's settings here, which would help the second manager.
void ForgetSettings() {
    const char* directory = ::getenv(kSettingsDirectoryVariable);
    std::error_code error;
    for (const std::string& name : NamesIn(directory == nullptr ? "" : directory, error)) {
        fs::remove(fs::path(directory) / name);
    }
    if (error) {
        throw fs::filesystem_error("the settings can't be forgotten", error);
    }
}

class LiveDemoRun {
  public:
    explicit LiveDemoRun(PluginSession& session) : m_session(session) {}

    LiveDemoResult Run() {
        PlayTarget();
        LoadAndSave();
        LoseTarget();
        ReloadAndCompare();
        return std::move(m_result);
    }

  private:
    /// The shipped target, with program images that exist.
    void PlayTarget() {
        auto scenario = ShippedScenario();
        for (auto& cpu : scenario.at("cpus")) {
            const fs::path file = cpu.at("object_file").get<std::string>();
            const fs::path image = m_session.home.Path() / "target" / file.filename();
            WriteDemoImage(image, kImageTime);
            cpu["object_file"] = image.string();
        }
        m_result.scenario = m_session.WorkingFile(kShippedScenario);
        WriteWorkingFile(m_result.scenario, scenario.dump(2) + "\n");
        ::setenv(kScenarioVariable, m_result.scenario.c_str(), 1);
    }

    void LoadAndSave() {
        Manager manager(m_session.plugin, kDemoCpu);
        m_result.live = LiveConfiguration::Load(m_session, manager);
        m_result.savedCapture = m_session.WorkingFile("live.tdf");
        WriteWorkingFile(m_result.savedCapture, ReadWorkingFile(m_result.live.saved.path));
        for (const Difference& lost : Compare(m_result.live.configuration, Read(m_result.savedCapture).configuration)) {
            m_result.problems.push_back(lost.Sentence(m_result.savedCapture));
        }
    }

    void LoseTarget() {
        ForgetSettings();
        ::unsetenv(kScenarioVariable);
        fs::remove(m_result.scenario);
        if (void* library = ::dlopen(kFactoryFile, RTLD_LAZY | RTLD_NOLOAD)) {
            ::dlclose(library);
            m_result.problems.emplace_back("the trace factory is still there after its manager's end");
        }
    }

    void ReloadAndCompare() {
        Manager manager(m_session.plugin, kDemoCpu);
        Reload(m_session, manager, m_result);
        m_result.reloaded.objectFiles = ObjectFilesHeldBy(manager, m_result.reloaded.objectFiles);
        m_result.differences = Compare(m_result.live.configuration, m_result.reloaded);
        if (!manager.Questions().empty()) {
            m_result.problems.emplace_back("the second manager asked for an object file");
        }
    }

    PluginSession& m_session;
    LiveDemoResult m_result;
};

}  // namespace

LiveDemoResult RunLiveDemo(PluginSession& session) { return LiveDemoRun(session).Run(); }

}  // namespace stmdcm
