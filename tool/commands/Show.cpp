#include "stmdcm/plugin/Plugin.h"
#include "stmdcm/plugin/PluginReading.h"
#include "stmdcm/reading/ObjectFileCheck.h"
#include "tool/commands/CommandTable.h"
#include "tool/output/GuardedHome.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

namespace {

/// Tells what a file holds.
struct ShowReport {
    const Reading& loaded;
    Selection selection;
    std::vector<std::string> doubts;

    std::string Text(const Palette& palette) const {
        return TextRenderer(palette).Render(loaded.configuration, selection);
    }

    Json Document() const {
        return JsonRenderer::Document("show",
                                      {{"file", loaded.path},
                                       {"kind", KindName(*loaded.kind)},
                                       {"loaded", loaded.isLoaded},
                                       {"doubts", doubts},
                                       {"configuration", JsonRenderer::Render(loaded.configuration, selection)}});
    }
};

/// The configuration in a capture or a settings file.
class Show final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("FILE", m_file, "A capture (.tdf) or a settings file")->required();
        app.add_flag("--properties", m_properties, "Show the properties");
        app.add_flag("--changed", m_changedOnly, "Show the properties that are not at their default");
        app.add_flag("--use-cases", m_usecases, "Show the use cases");
        app.add_flag("--objects", m_objectFiles, "Show the object files and how they are on disk");
        app.footer(
            "Shows everything unless parts are selected. Ends with status 3 when the file was read in part, or an "
            "object file can't be looked at; with status 1 when hosts can't load it. What can be read is shown all "
            "the same.\n\nExample:\n"
            "  stmdcm show --changed --objects capture.tdf");
    }

    ExitStatus Run(const Context& context) override {
        const Reading loaded = Read(m_file);
        std::vector<std::string> differences;
        if (!context.options.plugin.empty()) {
            differences = InGuardedHome({}, [&](const GuardedHome& home) {
                return DifferencesThroughPlugin(Plugin(home, context.options.plugin), loaded);
            });
        }
        ShowReport report{loaded, SelectionFor(loaded), loaded.Doubts()};
        if (report.selection.objectFiles) {
            const std::vector<std::string> images = NotLookedAt(loaded.configuration.objectFiles);
            report.doubts.insert(report.doubts.end(), images.begin(), images.end());
        }
        context.Print(report);
        context.console.Diagnose(m_file, report.doubts);
        context.console.Diagnose(differences);
        const ExitStatus status = loaded.isLoaded ? StatusOf(report.doubts) : ExitStatus::Failed;
        return status == ExitStatus::Done ? StatusOf(differences) : status;
    }

  private:
    Selection SelectionFor(const Reading& loaded) const {
        const bool isEverything = !m_properties && !m_changedOnly && !m_usecases && !m_objectFiles;
        Selection selection;
        selection.properties = (isEverything || m_properties || m_changedOnly) && loaded.hasSettings;
        selection.usecases = (isEverything || m_usecases) && loaded.hasSettings;
        selection.objectFiles = (isEverything || m_objectFiles) && loaded.hasObjectFiles;
        selection.changedOnly = m_changedOnly;
        return selection;
    }

    std::string m_file;
    bool m_properties = false;
    bool m_usecases = false;
    bool m_objectFiles = false;
    bool m_changedOnly = false;
};

}  // namespace

std::unique_ptr<Command> MakeShow() { return std::make_unique<Show>(); }

}  // namespace stmdcm
