#include <algorithm>
#include <iterator>
#include <string_view>

#include "tool/cli/ValueCheck.h"
#include "tool/commands/CommandTable.h"

namespace stmdcm {

namespace {

struct Script {
    const char* shell;  ///< the name of its program
    std::string_view text;
};

// Each is a file of tool/data/. They know no command: they ask the program that stands on the line what its words can
// go on with (`complete`).
constexpr Script kScripts[] = {
#include "CompletionScripts.inc"
};

/// The script that completes this program's command lines in a shell.
class PrintCompletion final : public Command {
  public:
    void Declare(CLI::App& app) override {
        std::vector<std::string> shells;
        std::transform(std::begin(kScripts), std::end(kScripts), std::back_inserter(shells),
                       [](const Script& script) { return script.shell; });
        app.add_option("SHELL", m_shell, "bash, zsh or fish")->required()->check(OneOf(shells));
        app.footer(
            "The installed program completes by itself where the shell looks for such scripts below its prefix. "
            "Elsewhere the example does it for bash, in this shell or in ~/.bashrc.\n\nExample:\n"
            "  source <(stmdcm completion bash)");
    }

    ExitStatus Run(const Context& context) override {
        const auto* script = std::find_if(std::begin(kScripts), std::end(kScripts),
                                          [&](const Script& each) { return each.shell == m_shell; });
        context.console.Print(script->text);
        return ExitStatus::Done;
    }

    bool HasDocument() const override { return false; }

  private:
    std::string m_shell;
};

}  // namespace

std::unique_ptr<Command> MakeCompletion() { return std::make_unique<PrintCompletion>(); }

}  // namespace stmdcm
