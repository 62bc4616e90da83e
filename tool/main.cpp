#include <cstdio>
#include <memory>
#include <new>
#include <vector>

#include "tool/Failure.h"
#include "tool/commands/CommandTable.h"

namespace stmdcm {

namespace {

std::string UsageSentence(const CLI::App* /*app*/, const CLI::Error& error) {
    return std::string("stmdcm: ") + error.what() + "\nRun with --help for more information.\n";
}

ColorMode ToColorMode(const std::string& name) {
    if (name == "auto") {
        return ColorMode::Auto;
    }
    return name == "always" ? ColorMode::Always : ColorMode::Never;
}

void DeclareGlobals(CLI::App& app, GlobalOptions& options) {
    app.set_version_flag("--version", "stmdcm " STMDCM_VERSION);
    app.add_option_function<std::string>(
           "--color", [&options](const std::string& name) { options.color = ToColorMode(name); },
           "Colours in the output: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN");
    app.add_option("--plugin", options.plugin, "The plug-in to load instead of this program's own")->type_name("FILE");
    app.add_flag("--json", options.json, "Print JSON (docs/json.md) instead of text");
    app.failure_message(UsageSentence);
}

ExitStatus RunCommand(Command& command, const GlobalOptions& options) {
    const Console console(options.color);
    try {
        return command.Run({options, console});
    } catch (const Failure& failure) {
        console.Diagnose(failure.what());
        return failure.Status();
    } catch (const std::bad_alloc&) {
        console.Diagnose("there is not enough memory");
    } catch (const std::exception& error) {
        console.Diagnose(error.what());
    }
    return ExitStatus::Failed;
}

ExitStatus Main(int argc, char** argv) {
    CLI::App app("Works with the configurations of STM trace captures.", "stmdcm");
    GlobalOptions options;
    DeclareGlobals(app, options);

    std::vector<std::unique_ptr<Command>> commands;
    Command* chosen = nullptr;
    for (const CommandEntry& entry : CommandTable()) {
        commands.push_back(entry.make());
        Command* command = commands.back().get();
        CLI::App* sub = app.add_subcommand(entry.name, entry.description)->fallthrough();
        command->Declare(*sub);
        sub->callback([command, &chosen] { chosen = command; });
    }
    try {
        app.parse(argc, argv);
        if (chosen == nullptr) {
            throw CLI::RequiredError("A command");
        }
    } catch (const CLI::ParseError& error) {
        // The parser has statuses of its own; every wrong command line is one status here.
        return app.exit(error) == 0 ? ExitStatus::Done : ExitStatus::Usage;
    }
    return RunCommand(*chosen, options);
}

}  // namespace

}  // namespace stmdcm

int main(int argc, char** argv) try { return static_cast<int>(stmdcm::Main(argc, argv)); } catch (...) {
    std::fputs("stmdcm: out of memory, or the output can't be written\n", stderr);
    return static_cast<int>(stmdcm::ExitStatus::Failed);
}
