#include "tool/commands/Sections.h"

#include <unistd.h>

#include "stmdcm/capture/Container.h"
#include "stmdcm/capture/SectionRuns.h"
#include "tool/commands/LayoutPicture.h"
#include "tool/commands/SectionsJson.h"
#include "tool/commands/SectionsText.h"

namespace stmdcm {

void Sections::Declare(CLI::App& app) {
    app.add_option("FILE", m_file, "A capture (.tdf)")->required()->type_name("CAPTURE");
    app.add_flag("--all", m_all, "A line for each section, also where many alike follow each other");
    app.add_flag("--picture", m_picture, "Draw the file's layout also where the output is no terminal");
    app.footer(
        "A reader takes the first section of a name and version: it is \"read\", later ones are \"shadowed\". Edits\n"
        "leave \"retired\" ones behind. \"unreachable\" is what lies behind the place where every search ends.\n"
        "Ends with status 3 when there are too many sections to list.\n\nExample:\n  stmdcm sections capture.tdf");
}

ExitStatus Sections::Run(const Context& context) {
    const Container container(m_file);
    const TextSink print = [&](std::string_view text) { context.console.Print(text); };
    if (context.options.json) {
        PrintSectionsJson(container, print);
    } else {
        const Palette& palette = context.console.Out();
        const SectionRuns runs(container);
        SectionsText(container, palette, print).Print(runs, m_all);
        if (m_picture || ::isatty(STDOUT_FILENO) == 1) {
            print(LayoutPicture(container, runs, palette).Text());
        }
    }
    return container.HasMore() ? ExitStatus::Doubtful : ExitStatus::Done;
}

}  // namespace stmdcm
