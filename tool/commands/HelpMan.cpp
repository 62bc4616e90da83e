#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <span>

#include "tool/cli/ProgramText.h"
#include "tool/cli/Syntax.h"
#include "tool/cli/TextBlock.h"
#include "tool/commands/CommandTable.h"

namespace stmdcm {

namespace {

/// Without what roff would obey.
std::string Escaped(const std::string& text) {
    std::string escaped;
    bool isLineStart = true;
    for (const char c : text) {
        if (isLineStart && (c == '.' || c == '\'')) {
            escaped += "\\&";
        }
        if (c == '\\') {
            escaped += "\\e";
        } else if (c == '-') {
            escaped += "\\-";
        } else {
            escaped += c;
        }
        isLineStart = c == '\n';
    }
    return escaped;
}

std::string Entry(const std::string& name, const std::string& meaning) {
    return fmt::format(".TP\n.B {}\n{}\n", Escaped(name), Escaped(meaning));
}

/// The help of a command goes without saying.
std::string Entries(const std::vector<const CLI::Option*>& options, const CLI::Option* left = nullptr) {
    std::string text;
    for (const CLI::Option* option : options) {
        text += option == left ? "" : Entry(Signature(*option), option->get_description());
    }
    return text;
}

std::string Entries(const char* title, std::span<const TextRow> rows) {
    std::string text = fmt::format(".SH {}\n", title);
    for (const TextRow& row : rows) {
        text += Entry(row.name, row.meaning);
    }
    return text;
}

std::string Verbatim(const std::string& text) { return fmt::format(".PP\n.nf\n{}\n.fi\n", Escaped(text)); }

std::string Blocks(const std::string& text) {
    std::string page;
    for (const TextBlock& block : TextBlocks(text)) {
        page += block.isVerbatim ? Verbatim(block.text) : fmt::format(".PP\n{}\n", Escaped(block.text));
    }
    return page;
}

std::string CommandPart(const CLI::App& command) {
    return fmt::format(".SS {}\n{}.\n", Escaped(Usage(command)), Escaped(command.get_description())) +
           Entries(Positionals(command)) + Entries(VisibleOptions(command), command.get_help_ptr()) +
           Blocks(command.get_footer());
}

std::string Title(const CLI::App& app) {
    std::string name = app.get_name();
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return fmt::format(".TH {} 1 \"\" \"{}\" \"User Commands\"\n", name, Escaped(app.version()));
}

/// As an index wants it: no capital, no full stop.
std::string Purpose(const CLI::App& app) {
    std::string text = app.get_description();
    text.erase(text.find_last_not_of('.') + 1);
    text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    return text;
}

/// In roff: the same texts that --help prints.
std::string ManualPage(const CLI::App& app) {
    std::string page = Title(app) + fmt::format(".SH NAME\n{} \\- {}\n", app.get_name(), Escaped(Purpose(app)));
    page += fmt::format(".SH SYNOPSIS\n.B {}\n", Escaped(Usage(app)));
    page += ".SH OPTIONS\nBefore or behind the command.\n" + Entries(VisibleOptions(app));
    page += ".SH COMMANDS\n";
    for (const CLI::App* command : VisibleCommands(app)) {
        page += CommandPart(*command);
    }
    page += Entries("EXIT STATUS", kExitStatuses) + Entries("ENVIRONMENT", kEnvironment) + Entries("FILES", kFiles);
    return page + ".SH EXAMPLES\n" + Verbatim(kExample) + ".SH SEE ALSO\n" + Escaped(kSeeAlso) + "\n";
}

/// The manual page, for the build to install.
class PrintManual final : public Command {
  public:
    void Declare(CLI::App& app) override {
        m_program = app.get_parent();
        app.footer("Example:\n  stmdcm help-man >stmdcm.1");
    }

    ExitStatus Run(const Context& context) override {
        context.console.Print(ManualPage(*m_program));
        return ExitStatus::Done;
    }

    bool HasDocument() const override { return false; }

  private:
    const CLI::App* m_program = nullptr;
};

}  // namespace

std::unique_ptr<Command> MakeHelpMan() { return std::make_unique<PrintManual>(); }

}  // namespace stmdcm
