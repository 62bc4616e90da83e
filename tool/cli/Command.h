#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "stmdcm/Failure.h"
#include "tool/cli/ExitStatus.h"
#include "tool/output/Console.h"
#include "tool/render/JsonRenderer.h"

namespace stmdcm {

/// The options that every command takes.
struct GlobalOptions {
    ColorMode color = ColorMode::Auto;
    std::string plugin;  ///< empty: the one that belongs to this program
    bool json = false;
};

/// What a running command works with.
struct Context {
    const GlobalOptions& options;
    const Console& console;
    const char* command;         ///< its name
    ExitStatus ofFailure;        ///< Command::FailureStatus
    bool isOneOfMany = false;    ///< what is printed is about one of many files: a document is one line
    const char* ofUnknown = "";  ///< the text in the place of what can't be told of one of many files

    /// What the command found: a report's Text(palette), or its Document() where JSON is asked for.
    template <class Report>
    void Print(const Report& report) const {
        if (options.json) {
            PrintDocument(report.Document());
        } else {
            console.Print(report.Text(console.Out()));
        }
    }
    template <class AnyDocument>
    void PrintDocument(const AnyDocument& document) const {
        console.Print(isOneOfMany ? JsonRenderer::Line(document) : JsonRenderer::Text(document));
    }

    /// Tells why the work could not be done, and gives the status of that.
    ExitStatus Tell(const Failure& failure) const;
    /// As it is told.
    static std::string Sentence(const Failure& failure);
};

/// One command of the tool. Lives from the declaration of its options to the end of its run.
class Command {
  public:
    virtual ~Command() = default;

    /// Adds the command's own arguments and options, bound to this object, and a footer that ends with an example.
    /// The placeholder of a value (its type name, or else the name of a positional) tells people what it is and
    /// completion what to offer, see tool/cli/ValueKind.h. In the footer lines that begin with two blanks stay as they
    /// are, all others are wrapped anew.
    virtual void Declare(CLI::App& app) = 0;

    /// Looks at what was parsed, where the parser can't; throws CLI::ParseError.
    virtual void Check() {}

    /// Does the work. A failure is told by the status or by an exception, which becomes a diagnostic.
    virtual ExitStatus Run(const Context& context) = 0;

    /// Whether --json changes what it prints.
    virtual bool HasDocument() const { return true; }

    /// Whether it loads the plug-in that --plugin names.
    virtual bool LoadsPlugin() const { return false; }

    /// What it means that the work could not be done.
    virtual ExitStatus FailureStatus() const { return ExitStatus::Failed; }
};

/// A command's line in the table of all.
struct CommandEntry {
    const char* name;
    const char* description;
    std::unique_ptr<Command> (*make)();
    bool isHidden = false;  ///< for programs: in no help
};

}  // namespace stmdcm
