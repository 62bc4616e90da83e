#include "tool/commands/Show.h"

#include "stmdcm/plugin/PluginReading.h"
#include "tool/commands/ShowReport.h"
#include "tool/output/GuardedHome.h"

namespace stmdcm {

void Show::Declare(CLI::App& app) {
    app.add_option("FILE", m_file, "A capture (.tdf) or a settings file")->required();
    app.add_flag("--properties", m_properties, "Show the properties");
    app.add_flag("--changed", m_changedOnly, "Show the properties that are not at their default");
    app.add_flag("--use-cases", m_usecases, "Show the use cases");
    app.add_flag("--objects", m_objectFiles, "Show the object files and how they are on disk");
    app.footer(
        "Shows everything unless parts are selected. Ends with status 3 when the file was read in part, with status 1\n"
        "when hosts can't load it; what can be read is shown all the same.\n\nExample:\n"
        "  stmdcm show --changed --objects capture.tdf");
}

ExitStatus Show::Run(const Context& context) {
    const Reading loaded = Read(m_file);
    std::vector<std::string> differences;
    if (!context.options.plugin.empty()) {
        const GuardedHome home;
        differences = DifferencesThroughPlugin(Plugin(home, context.options.plugin), loaded);
    }
    const ShowReport report(loaded, SelectionFor(loaded));
    context.console.Print(context.options.json ? report.Json() : report.Text(context.console.Out()));
    for (const auto& sentences : {loaded.Sentences(), differences}) {
        for (const std::string& sentence : sentences) {
            context.console.Diagnose(sentence);
        }
    }
    const ExitStatus status = StatusOf(loaded);
    return status == ExitStatus::Done && !differences.empty() ? ExitStatus::Doubtful : status;
}

Selection Show::SelectionFor(const Reading& loaded) const {
    const bool isEverything = !m_properties && !m_changedOnly && !m_usecases && !m_objectFiles;
    Selection selection;
    selection.properties = (isEverything || m_properties || m_changedOnly) && loaded.hasSettings;
    selection.usecases = (isEverything || m_usecases) && loaded.hasSettings;
    selection.objectFiles = (isEverything || m_objectFiles) && loaded.hasObjectFiles;
    selection.changedOnly = m_changedOnly;
    return selection;
}

}  // namespace stmdcm
