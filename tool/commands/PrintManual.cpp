#include "tool/commands/PrintManual.h"

#include "tool/cli/ManualPage.h"

namespace stmdcm {

void PrintManual::Declare(CLI::App& app) {
    m_program = app.get_parent();
    app.footer("Example:\n  stmdcm help-man >stmdcm.1");
}

ExitStatus PrintManual::Run(const Context& context) {
    context.console.Print(ManualPage(*m_program));
    return ExitStatus::Done;
}

}  // namespace stmdcm
