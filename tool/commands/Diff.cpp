#include "tool/commands/Diff.h"

#include "stmdcm/reading/Reading.h"
#include "tool/commands/DiffReport.h"

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
    const Reading left = Read(m_left);
    left.RequireLoaded();
    const Reading right = Read(m_right);
    right.RequireLoaded();

    const DiffReport report(left, right);
    context.console.Print(context.options.json ? report.Json() : report.Text(context.console.Out()));
    for (const Reading* side : {&left, &right}) {
        for (const std::string& sentence : side->Sentences()) {
            context.console.Diagnose(sentence);
        }
    }
    if (!report.IsEqual()) {
        return ExitStatus::Failed;
    }
    return left.Doubts().empty() && right.Doubts().empty() ? ExitStatus::Done : ExitStatus::Doubtful;
}

}  // namespace stmdcm
