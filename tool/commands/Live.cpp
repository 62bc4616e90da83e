#include "tool/commands/Live.h"

#include <fmt/format.h>
#include <stdlib.h>

#include <filesystem>

#include "tool/Failure.h"
#include "tool/commands/LiveReport.h"
#include "tool/model/ConfigurationSource.h"
#include "tool/model/ConfigurationWriter.h"
#include "tool/model/LiveConfiguration.h"
#include "tool/plugin/Installation.h"
#include "tool/plugin/LibraryPath.h"
#include "tool/plugin/Manager.h"
#include "tool/plugin/PluginSession.h"

namespace stmdcm {

namespace fs = std::filesystem;

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
    PluginSession session(context.options.plugin);
    Manager manager(session.plugin, m_cpu);
    LiveConfiguration live = LiveConfiguration::Load(session, manager);
    if (!m_save.empty()) {
        Save(session, manager, live);
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

bool Live::SavesIntoCapture() const {
    return fs::exists(m_save) && ConfigurationSource::KindOfName(m_save) == ConfigurationKind::Capture;
}

/// Before the target is bothered.
void Live::CheckSave() const {
    if (SavesIntoCapture()) {
        ConfigurationSource::KindOf(m_save);
    }
}

void Live::Save(PluginSession& session, Manager& manager, LiveConfiguration& live) const {
    const ConfigurationWriter writer(session);
    if (SavesIntoCapture()) {
        for (std::string& doubt : writer.AppendTo(m_save, manager, live.configuration)) {
            live.doubts.push_back(std::move(doubt));
        }
        return;
    }
    for (const Difference& lost : writer.WriteNew(manager, live.configuration, m_save, m_force, {})) {
        live.doubts.push_back(lost.Sentence(m_save));
    }
    if (ConfigurationSource::KindOfName(m_save) == ConfigurationKind::Settings &&
        !live.configuration.objectFiles.empty()) {
        live.doubts.push_back(fmt::format("{}: settings have no object files: the target's {} are not saved", m_save,
                                          live.configuration.objectFiles.size()));
    }
}

}  // namespace stmdcm
