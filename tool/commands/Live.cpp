#include "tool/commands/Live.h"

#include <fmt/format.h>
#include <stdlib.h>

#include <filesystem>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/Container.h"
#include "stmdcm/plugin/Installation.h"
#include "stmdcm/plugin/LibraryPath.h"
#include "stmdcm/plugin/LiveConfiguration.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/PluginSession.h"
#include "tool/commands/LiveReport.h"
#include "tool/output/ConfigurationFile.h"
#include "tool/output/GuardedHome.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

void Live::Declare(CLI::App& app) {
    app.add_option("--cpu", m_cpu, "The CPU's name, as the live system has it")->required()->type_name("NAME");
    app.add_option("--factory-dir", m_factoryDirectory, "Where the trace factory, libTraceFactory.so, is")
        ->type_name("DIR");
    app.add_option("--scenario", m_scenario, "Play this target with the simulated trace factory")
        ->type_name("FILE.json");
    app.add_option("--save", m_save, "Save what was loaded: into a capture (.tdf) or a settings file")
        ->type_name("FILE");
    app.add_flag("--force", m_force, "Overwrite a settings file");
    app.footer(
        "Without --factory-dir the dynamic loader finds the factory, and with a scenario, given here or in the "
        "variable\n"
        "STMDCM_SCENARIO, it is the simulated one. An existing capture gets the configuration appended if it holds "
        "none.\n"
        "Ends with status 3 when the target did not tell everything.\n\nExample:\n"
        "  stmdcm live --cpu Core_0/Cluster --scenario target.json --save target.tdf");
}

ExitStatus Live::Run(const Context& context) {
    ChooseFactory();
    CheckSave();
    const GuardedHome home;
    PluginSession session(home, context.options.plugin);
    Manager manager(session.plugin, m_cpu);
    LiveConfiguration live = LiveConfiguration::Load(session, manager);
    if (!m_save.empty()) {
        Save(manager, live);
    }
    const LiveReport report(live, session.plugin.Path().string(), m_save);
    context.console.Print(context.options.json ? report.Json() : report.Text(context.console.Out()));
    for (const std::string& doubt : live.doubts) {
        context.console.Diagnose(doubt);
    }
    return live.doubts.empty() ? ExitStatus::Done : ExitStatus::Doubtful;
}

void Live::ChooseFactory() const {
    if (!m_scenario.empty()) {
        if (!fs::is_regular_file(m_scenario)) {
            throw Failure(fmt::format("{}: there is no such file; name a scenario", m_scenario));
        }
        ::setenv(kScenarioVariable, fs::absolute(m_scenario).c_str(), 1);
    }
    if (!m_factoryDirectory.empty()) {
        SearchLibrariesFirstIn(m_factoryDirectory, kFactoryFile);
    } else if (::getenv(kScenarioVariable) != nullptr) {
        SearchLibrariesFirstIn(SimulatorDirectory(), kFactoryFile);
    }
}

bool Live::SavesIntoCapture() const { return fs::exists(m_save) && KindOfName(m_save) == ConfigurationKind::Capture; }

/// Before the target is bothered.
void Live::CheckSave() const {
    if (SavesIntoCapture()) {
        KindOf(m_save);
    }
}

void Live::Save(Manager& manager, LiveConfiguration& live) const {
    if (SavesIntoCapture()) {
        AppendTo(manager, live);
        return;
    }
    const bool isCapture = KindOfName(m_save) == ConfigurationKind::Capture;
    const CaptureFile saved(live.saved.path);
    const std::string bytes = isCapture ? saved.Read(0, saved.Size()) : live.saved.settings->Text();
    Configuration expected = live.configuration;
    if (!isCapture) {
        expected.objectFiles.clear();
    }
    for (const Difference& lost : WriteConfiguration(m_save, bytes, expected, m_force, {})) {
        live.doubts.push_back(lost.Sentence(m_save));
    }
    if (!isCapture && !live.configuration.objectFiles.empty()) {
        live.doubts.push_back(fmt::format("{}: settings have no object files: the target's {} are not saved", m_save,
                                          live.configuration.objectFiles.size()));
    }
}

/// Into a capture that holds no configuration yet; Failure for one that does.
void Live::AppendTo(Manager& manager, LiveConfiguration& live) const {
    const Container container(m_save);
    if (!container.IsWhole()) {
        throw Failure(
            fmt::format("{}: the capture is damaged at offset {}, what is appended could not be found; recover "
                        "it first",
                        m_save, container.StopOffset()));
    }
    if (container.Find(kStmSectionName, kStmSectionVersion) != nullptr ||
        container.Find(kCommonSectionName, kCommonSectionVersion) != nullptr) {
        throw Failure(
            fmt::format("{}: the capture holds a configuration, and hosts would go on reading that; save into "
                        "a file of its own and use apply",
                        m_save));
    }
    if (!manager.Save(m_save, TRACE_DATA_FILE_TDF)) {
        throw Failure(
            fmt::format("{}: the plug-in can't save the configuration; check that the file can be written", m_save));
    }
    const Reading saved = Read(m_save);
    if (!saved.isLoaded) {
        for (const std::string& doubt : saved.Sentences()) {
            live.doubts.push_back(doubt);
        }
    } else if (!Compare(live.configuration, saved.configuration).empty()) {
        live.doubts.push_back(
            fmt::format("{}: hosts load another configuration than was saved: diff shows how", m_save));
    }
}

}  // namespace stmdcm
