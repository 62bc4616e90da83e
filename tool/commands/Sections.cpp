#include <unistd.h>

#include "stmdcm/capture/Container.h"
#include "stmdcm/capture/SectionRuns.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/LayoutPicture.h"
#include "tool/reports/SectionsReport.h"

namespace stmdcm {

namespace {

/// The container of a capture.
class Sections final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("FILE", m_file, "A capture (.tdf)")->required()->type_name("CAPTURE");
        app.add_flag("--all", m_all, "A line for each section, also where many alike follow each other");
        app.add_flag("--picture", m_picture, "Draw the file's layout also where the output is no terminal");
        app.footer(
            "A reader takes the first section of a name and version: it is \"read\", later ones are \"shadowed\". "
            "Edits leave \"retired\" ones behind. \"unreachable\" is what lies behind the place where every search "
            "ends. Ends with status 3 when there are too many sections to list.\n\nExample:\n"
            "  stmdcm sections capture.tdf");
    }

    ExitStatus Run(const Context& context) override {
        const Container container(m_file);
        SectionsReport report(container, context.console.Out(),
                              [&](std::string_view text) { context.console.Print(text); });
        if (context.options.json) {
            report.PrintDocument();
        } else {
            const SectionRuns runs(container);
            report.PrintText(runs, m_all);
            if (m_picture || ::isatty(STDOUT_FILENO) == 1) {
                context.console.Print(LayoutPicture(container, runs, context.console.Out()));
            }
        }
        return container.HasMore() ? ExitStatus::Doubtful : ExitStatus::Done;
    }

  private:
    std::string m_file;
    bool m_all = false;
    bool m_picture = false;
};

}  // namespace

std::unique_ptr<Command> MakeSections() { return std::make_unique<Sections>(); }

}  // namespace stmdcm
