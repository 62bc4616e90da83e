#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/Container.h"
#include "stmdcm/plugin/Installation.h"
#include "stmdcm/plugin/LibraryPath.h"
#include "stmdcm/plugin/LiveConfiguration.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/PluginSession.h"
#include "stmdcm/plugin/TargetCpus.h"
#include "stmdcm/plugin/TargetRecorder.h"
#include "stmdcm/reading/Words.h"
#include "tool/cli/ProgramText.h"
#include "tool/cli/ValueCheck.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/LiveRecording.h"
#include "tool/output/ConfigurationFile.h"
#include "tool/output/GuardedHome.h"
#include "tool/render/TextRenderer.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

namespace {

/// Tells what a live target gave.
struct LiveReport {
    const LiveConfiguration& live;
    std::string plugin;
    std::string saved;     ///< empty for none
    std::string recorded;  ///< empty for none

    std::string Text(const Palette& palette) const {
        return TextRenderer(palette).Render(live.configuration) +
               (saved.empty() ? "" : fmt::format("\nSaved into {}\n", Shown(saved))) +
               (recorded.empty() ? "" : fmt::format("\nRecorded as {}\n", Shown(recorded)));
    }

    JsonLine Document() const {
        JsonWriter out = JsonRenderer::Begin("live");
        out.Member("plugin", plugin).Member("cpu", live.cpu).Member("doubts", live.doubts).Key("configuration");
        JsonRenderer::Write(out, live.configuration);
        out.Key("saved").OrNull(saved).Key("recorded").OrNull(recorded);
        return out.EndObject().Take();
    }
};

/// Tells the CPUs of a live target.
struct CpuList {
    std::vector<std::string> cpus;

    std::string Text(const Palette& /*palette*/) const {
        std::string text;
        for (const std::string& cpu : cpus) {
            text += Escaped(cpu) + "\n";
        }
        return text;
    }

    Json Document() const { return JsonRenderer::Document("live", {{"cpus", cpus}}); }
};

/// Of files that may not be there yet.
bool IsSameName(const std::string& left, const std::string& right) {
    return fs::weakly_canonical(fs::absolute(left)) == fs::weakly_canonical(fs::absolute(right));
}

/// The configuration of a live target.
class Live final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("--cpu", m_cpu, "The CPU's name, as the live system has it; without it these are listed")
            ->check(SomeText())
            ->type_name("CPU");
        app.add_option("--factory-dir", m_factoryDirectory, "Where the trace factory, libTraceFactory.so, is")
            ->check(SomeText())
            ->type_name("DIR");
        app.add_option("--scenario", m_scenario, "Play this target with the simulated trace factory")
            ->check(SomeText())
            ->type_name("FILE.json");
        app.add_option("--save", m_save, "Save what was loaded: into a capture (.tdf) or a settings file")
            ->check(SomeText())
            ->type_name("FILE");
        app.add_option("--record", m_record, "Record what the target answered as a scenario for --scenario")
            ->check(SomeText())
            ->type_name("FILE.json");
        app.add_flag("--force", m_force, std::string(kOverwriteSettings) + "; and a recording");
        app.footer(
            "Without --cpu the names of the CPUs are listed, one a line. Without --factory-dir the dynamic loader "
            "finds the factory, and with a scenario, given here or in the "
            "variable STMDCM_SCENARIO, it is the simulated one. An existing capture gets the configuration appended if "
            "it holds none. A recording holds failures, too, and is also written when the target can't be loaded. Ends "
            "with status 3 when the target did not tell everything.\n\nExample:\n"
            "  stmdcm live --cpu Core_0/Cluster --scenario target.json --save target.tdf");
    }

    void Check() override {
        if (m_force && m_save.empty() && m_record.empty()) {
            throw CLI::RequiresError("--force", "--save or --record");
        }
        if (!m_save.empty() && !m_record.empty() && IsSameName(m_save, m_record)) {
            throw CLI::ValidationError("--record", "names the file of --save");
        }
    }

    bool LoadsPlugin() const override { return true; }

    ExitStatus Run(const Context& context) override {
        fs::path directory = ChooseFactory(m_scenario, m_factoryDirectory);
        if (!m_record.empty()) {
            directory = RecorderInFrontOf(directory);
        }
        if (m_cpu.empty()) {
            return List(context, directory);
        }
        if (!directory.empty()) {
            SearchLibrariesFirstIn(directory, kFactoryFile);
        }
        if (SavesIntoCapture()) {
            KindOf(m_save);  // fails before the target is bothered
        }
        return InGuardedHome({}, [&](const GuardedHome& home) {
            PluginSession session(home, context.options.plugin);
            LiveRecording recording = Recording(home);
            LiveConfiguration live;
            const std::vector<std::string> lost = recording.Of([&] { live = Load(session); });
            live.doubts.insert(live.doubts.end(), lost.begin(), lost.end());
            context.Print(LiveReport{live, session.plugin.Path().string(), m_save, m_record});
            context.console.Diagnose(live.doubts);
            return StatusOf(live.doubts);
        });
    }

  private:
    ExitStatus List(const Context& context, const fs::path& directory) const {
        if (!m_save.empty()) {
            throw Failure("--save needs --cpu", Failure::Kind::Request);
        }
        if (m_record.empty()) {
            context.Print(CpuList{TargetCpus(directory)});
            return ExitStatus::Done;
        }
        return InGuardedHome({}, [&](const GuardedHome& home) {
            LiveRecording recording = Recording(home);
            CpuList list;
            const std::vector<std::string> lost = recording.Of([&] { list.cpus = TargetCpus(directory); });
            context.Print(list);
            context.console.Diagnose(lost);
            return StatusOf(lost);
        });
    }

    LiveRecording Recording(const TraceHome& home) const {
        const char* played = std::getenv(kScenarioVariable);
        return {home, m_record, m_force, {played != nullptr ? played : ""}};
    }

    LiveConfiguration Load(PluginSession& session) const {
        Manager manager(session.plugin, m_cpu);
        LiveConfiguration live = LiveConfiguration::Load(session, manager);
        if (!m_save.empty()) {
            Save(session, manager, live);
        }
        return live;
    }

    bool SavesIntoCapture() const { return fs::exists(m_save) && KindOfName(m_save) == ConfigurationKind::Capture; }

    /// Adds to the doubts what could not be kept.
    void Save(PluginSession& session, Manager& manager, LiveConfiguration& live) const {
        if (SavesIntoCapture()) {
            AppendTo(session, manager, live);
            return;
        }
        const bool isCapture = KindOfName(m_save) == ConfigurationKind::Capture;
        const CaptureFile saved(live.saved.path);
        const std::string bytes = isCapture ? saved.Read(0, saved.Size()) : live.saved.settings->Text();
        const Configuration expected = isCapture ? live.configuration : live.configuration.WithoutObjectFiles();
        for (std::string& lost : WriteConfiguration(m_save, bytes, expected, m_force, {})) {
            live.doubts.push_back(std::move(lost));
        }
        if (!isCapture && !live.configuration.objectFiles.empty()) {
            live.doubts.push_back(fmt::format("{}: settings have no object files: the target's {} are not saved",
                                              m_save, live.configuration.objectFiles.size()));
        }
    }

    /// Into a capture that holds no configuration yet; Failure for one that does.
    void AppendTo(PluginSession& session, Manager& manager, LiveConfiguration& live) const {
        const Container container(m_save);
        if (!container.IsWhole()) {
            throw Failure(
                m_save, fmt::format("the capture is damaged at offset {}, what is appended could not be found; recover "
                                    "it first",
                                    container.StopOffset()))
                .At(container.StopOffset());
        }
        if (container.Find(kStmSectionName, kStmSectionVersion) != nullptr ||
            container.Find(kCommonSectionName, kCommonSectionVersion) != nullptr) {
            throw Failure(m_save,
                          "the capture holds a configuration, and hosts would go on reading that; save into "
                          "a file of its own and use apply");
        }
        session.log.Take();
        if (!manager.Save(m_save, TRACE_DATA_FILE_TDF)) {
            throw Failure(m_save,
                          fmt::format("the plug-in can't save the configuration{}", session.log.WhyFailed(m_save)));
        }
        const Reading saved = Read(m_save);
        if (!saved.isLoaded) {
            const std::vector<std::string> sentences = saved.Sentences();
            live.doubts.insert(live.doubts.end(), sentences.begin(), sentences.end());
        } else if (!Compare(live.configuration, saved.configuration).empty()) {
            live.doubts.push_back(
                fmt::format("{}: hosts load another configuration than was saved: diff shows how", m_save));
        }
    }

    std::string m_cpu;
    std::string m_factoryDirectory;
    std::string m_scenario;
    std::string m_save;
    std::string m_record;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeLive() { return std::make_unique<Live>(); }

}  // namespace stmdcm
