#include <fmt/format.h>

#include "stmdcm/reading/ObjectFileCheck.h"
#include "stmdcm/reading/Words.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/OtherPlugin.h"
#include "tool/many/ManyFiles.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

namespace {

/// Tells what a file holds.
struct ShowReport {
    const Reading& loaded;
    Selection selection;
    std::vector<std::string> doubts;
    bool isOneOfMany;

    std::string Text(const Palette& palette) const {
        const TextRenderer renderer(palette);
        const std::string text = renderer.Render(loaded.configuration, selection);
        return isOneOfMany ? renderer.Heading(Shown(loaded.path)) + text + "\n" : text;
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
        m_files.DeclareFiles(app, "FILE", "Captures (.tdf) and settings files");
        app.add_flag("--properties", m_properties, "Show the properties");
        app.add_flag("--changed", m_changedOnly, "Show the properties that are not at their default");
        app.add_flag("--use-cases", m_usecases, "Show the use cases");
        app.add_flag("--objects", m_objectFiles, "Show the object files and how they are on disk");
        m_files.DeclareOptions(app);
        app.footer(
            "Shows everything unless parts are selected. Ends with status 3 when the file was read in part, or an "
            "object file can't be looked at; with status 1 when hosts can't load it. What can be read is shown all "
            "the same.\n\nExample:\n"
            "  stmdcm show --changed --objects capture.tdf");
    }

    void Check() override { m_files.RequireAny("FILE"); }

    ExitStatus Run(const Context& context) override {
        return m_files.Run(context,
                           [this, plugin = OtherPlugin()](const Context& own, const std::string& file) mutable {
                               return ShowOne(own, file, plugin);
                           });
    }

  private:
    FileResult ShowOne(const Context& context, const std::string& file, OtherPlugin& plugin) const {
        const Reading loaded = Read(file);
        const std::vector<std::string> differences = plugin.Differences(context, loaded);
        ShowReport report{loaded, SelectionFor(loaded), loaded.Doubts(), context.isOneOfMany};
        if (report.selection.objectFiles) {
            const std::vector<std::string> images = NotLookedAt(loaded.configuration.objectFiles);
            report.doubts.insert(report.doubts.end(), images.begin(), images.end());
        }
        context.Print(report);
        context.console.Diagnose(file, report.doubts);
        context.console.Diagnose(differences);
        if (!loaded.isLoaded) {
            return {ExitStatus::Failed, {}, fmt::format("{}: hosts can't load it", Shown(file))};
        }
        return {StatusOf(report.doubts.empty() ? differences : report.doubts)};
    }

    Selection SelectionFor(const Reading& loaded) const {
        const bool isEverything = !m_properties && !m_changedOnly && !m_usecases && !m_objectFiles;
        Selection selection;
        selection.properties = (isEverything || m_properties || m_changedOnly) && loaded.hasSettings;
        selection.usecases = (isEverything || m_usecases) && loaded.hasSettings;
        selection.objectFiles = (isEverything || m_objectFiles) && loaded.hasObjectFiles;
        selection.changedOnly = m_changedOnly;
        return selection;
    }

    ManyFiles m_files{ManyFiles::Purpose::Read};
    bool m_properties = false;
    bool m_usecases = false;
    bool m_objectFiles = false;
    bool m_changedOnly = false;
};

}  // namespace

std::unique_ptr<Command> MakeShow() { return std::make_unique<Show>(); }

}  // namespace stmdcm
