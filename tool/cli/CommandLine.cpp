#include "tool/cli/CommandLine.h"

#include <cstdio>
#include <sstream>
#include <string>

#include "stmdcm/capture/LockedFile.h"
#include "stmdcm/reading/Words.h"
#include "tool/cli/HelpFormatter.h"
#include "tool/cli/ProgramText.h"
#include "tool/cli/UsageError.h"
#include "tool/cli/ValueCheck.h"
#include "tool/cli/ValueKind.h"
#include "tool/output/AsFailure.h"
#include "tool/output/StandardOutput.h"

namespace stmdcm {

namespace {

constexpr char kProgram[] = "stmdcm";

ColorMode ToColorMode(const std::string& name) {
    if (name == "auto") {
        return ColorMode::Auto;
    }
    return name == "always" ? ColorMode::Always : ColorMode::Never;
}

/// Those that the command line names.
std::vector<std::string> FilesIn(const CLI::App& command) {
    std::vector<std::string> files;
    for (const CLI::Option* option : command.get_options()) {
        if (ValueSyntaxOf(*option).kind == ValueKind::File) {
            files.insert(files.end(), option->results().begin(), option->results().end());
        }
    }
    return files;
}

}  // namespace

CommandLine::CommandLine(std::span<const CommandEntry> commands) : m_app(kProgramDescription, kProgram) {
    DeclareGlobals();
    for (const CommandEntry& entry : commands) {
        DeclareCommand(entry);
    }
}

void CommandLine::DeclareGlobals() {
    m_app.formatter(std::make_shared<HelpFormatter>());
    m_app.failure_message([](const CLI::App* app, const CLI::Error& error) { return UsageError(*app, error); });
    // One alone: what follows a command is never another, also not a file of such a name.
    m_app.require_subcommand(1);
    m_app.set_help_flag("-h,--help", "Print this help");
    m_app.set_version_flag("--version", std::string(kProgram) + " " STMDCM_VERSION, "Print the version");
    m_app
        .add_option_function<std::string>(
            "--color", [this](const std::string& name) { m_options.color = ToColorMode(name); },
            "Colours in the output: auto, always or never")
        ->check(OneOf({"auto", "always", "never"}))
        ->type_name("WHEN");
    m_app
        .add_option("--plugin", m_options.plugin,
                    "The plug-in to load instead of this program's own, of show, check, recover, live and demo")
        ->type_name("FILE.so");
    m_app.add_flag("--json", m_options.json,
                   "Print JSON (docs/json.md) instead of text; extract, completion and new-host refuse it");
}

void CommandLine::DeclareCommand(const CommandEntry& entry) {
    m_commands.push_back(entry.make());
    Command* command = m_commands.back().get();
    CLI::App* app = m_app.add_subcommand(entry.name, entry.description)->fallthrough();
    if (entry.isHidden) {
        app->group("");
    }
    command->Declare(*app);
    app->callback([this, command, name = entry.name] {
        m_chosen = command;
        m_chosenName = name;
        command->Check();
    });
}

ExitStatus CommandLine::Run(int argc, const char* const* argv) {
    try {
        m_app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return EndParsing(error);
    }
    return RunChosen();
}

/// Prints the help, the version, or what is wrong.
ExitStatus CommandLine::EndParsing(const CLI::ParseError& error) const {
    std::ostringstream out;
    std::ostringstream wrong;
    // The parser has statuses of its own; every wrong command line is one status here. A word that is no command is
    // wrong even where help is asked for.
    const bool isUnknown = m_app.get_subcommands().empty() && m_app.remaining_size() > 0;
    const bool isRight = isUnknown ? m_app.exit(CLI::ExtrasError(m_app.remaining()), out, wrong) == 0
                                   : m_app.exit(error, out, wrong) == 0;
    try {
        Console::ToStandardOutput(out.str());
    } catch (const Failure& failure) {
        Console(m_options.color).Diagnose(failure.what());
        return ExitStatus::Failed;
    }
    std::fputs(wrong.str().c_str(), stderr);
    return isRight ? ExitStatus::Done : ExitStatus::Usage;
}

ExitStatus CommandLine::RunChosen() {
    const Console console(m_options.color);
    LockedFile::OnLongWait([&](const std::string& path) {
        console.Diagnose(Shown(path) + ": another program changes the file; waiting until it is done");
    });
    const Context context{m_options, console, m_chosenName, m_chosen->FailureStatus()};
    try {
        return AsFailure([&] {
            RequireEffect();
            for (const std::string& file : FilesIn(*m_app.get_subcommands().front())) {
                RefuseStandardOutputIn(file);
            }
            return m_chosen->Run(context);
        });
    } catch (const Failure& failure) {
        return context.Tell(failure);
    }
}

/// Of the options that every command takes.
void CommandLine::RequireEffect() const {
    if (m_options.json && !m_chosen->HasDocument()) {
        throw Failure(std::string(m_chosenName) + " has no JSON; leave --json out", Failure::Kind::Request);
    }
    if (!m_options.plugin.empty() && !m_chosen->LoadsPlugin()) {
        throw Failure(std::string(m_chosenName) + " loads no plug-in; leave --plugin out", Failure::Kind::Request);
    }
}

}  // namespace stmdcm
