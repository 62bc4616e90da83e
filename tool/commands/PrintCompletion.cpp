#include "tool/commands/PrintCompletion.h"

#include <vector>

#include "tool/cli/CompletionScript.h"

namespace stmdcm {

void PrintCompletion::Declare(CLI::App& app) {
    app.add_option("SHELL", m_shell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(kShells), std::end(kShells))));
    app.footer(
        "The installed program completes by itself where the shell looks for such scripts below its prefix. Elsewhere "
        "the example does it for bash, in this shell or in ~/.bashrc.\n\nExample:\n"
        "  source <(stmdcm completion bash)");
}

ExitStatus PrintCompletion::Run(const Context& context) {
    context.console.Print(CompletionScript(m_shell));
    return ExitStatus::Done;
}

}  // namespace stmdcm
