#include "tool/commands/Diff.h"

#include "tool/commands/DiffReport.h"
#include "tool/model/ConfigurationSource.h"
#include "tool/plugin/PluginSession.h"

namespace stmdcm {

void Diff::Declare(CLI::App& app) {
    app.add_option("LEFT", m_left, "A capture (.tdf) or a settings file")->required();
    app.add_option("RIGHT", m_right, "Another one")->required();
    app.footer(
        "Use cases are matched by job and module, object files by name. Settings files have no object files: with one "
        "of\n"
        "them these are not compared. Ends with status 0 when nothing differs, 1 when something does or a file can't "
        "be\n"
        "loaded, 3 when nothing differs in what could be read.\n\nExample:\n  stmdcm diff before.tdf after.tdf");
}

ExitStatus Diff::Run(const Context& context) {
    PluginSession session(context.options.plugin);
    const ConfigurationSource source(session);
    const LoadedConfiguration left = source.Load(m_left);
    left.RequireLoaded();
    const LoadedConfiguration right = source.Load(m_right);
    right.RequireLoaded();

    const DiffReport report(left, right);
    context.console.Print(context.options.json ? report.Json() : report.Text(context.console.Out()));
    for (const LoadedConfiguration* side : {&left, &right}) {
        for (const std::string& sentence : side->Sentences()) {
            context.console.Diagnose(sentence);
        }
    }
    if (!report.IsEqual()) {
        return ExitStatus::Failed;
    }
    return left.doubts.empty() && right.doubts.empty() ? ExitStatus::Done : ExitStatus::Doubtful;
}

}  // namespace stmdcm
