#include "tool/cli/HelpFormatter.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "tool/cli/ProgramText.h"
#include "tool/cli/Syntax.h"
#include "tool/cli/TextBlock.h"

namespace stmdcm {

namespace {

constexpr std::size_t kMargin = 2;
constexpr std::size_t kWidestName = 24;

using HelpRow = std::pair<std::string, std::string>;

std::string HelpSection(const char* title, const std::vector<HelpRow>& rows) {
    std::size_t width = 0;
    for (const HelpRow& row : rows) {
        width = std::max(width, row.first.size() > kWidestName ? 0 : row.first.size());
    }
    const std::size_t column = kMargin + width + kMargin;
    std::string text = rows.empty() ? "" : fmt::format("\n{}:\n", title);
    for (const auto& [name, meaning] : rows) {
        text += fmt::format("{:{}}{:<{}}", "", kMargin, name, width);
        text += name.size() > width ? fmt::format("\n{:{}}", "", column) : std::string(kMargin, ' ');
        text += Wrapped(meaning, column, HelpFormatter::kWidth) + "\n";
    }
    return text;
}

HelpRow ToRow(const CLI::Option* option) { return {Signature(*option), option->get_description()}; }
HelpRow ToRow(const CLI::App* command) { return {command->get_name(), command->get_description()}; }
HelpRow ToRow(const TextRow& text) { return {text.name, text.meaning}; }

template <class Items>
std::vector<HelpRow> Rows(const Items& items) {
    std::vector<HelpRow> rows(std::size(items));
    std::transform(std::begin(items), std::end(items), rows.begin(), [](const auto& item) { return ToRow(item); });
    return rows;
}

std::string Footer(const std::string& text) {
    std::string footer;
    for (const TextBlock& block : TextBlocks(text)) {
        footer += block.isAfterBlank || footer.empty() ? "\n" : "";
        footer += (block.isVerbatim ? block.text : Wrapped(block.text, 0, HelpFormatter::kWidth)) + "\n";
    }
    return footer;
}

std::string ProgramEnd(const CLI::App& app) {
    return HelpSection("Exit status", Rows(kExitStatuses)) + HelpSection("Environment", Rows(kEnvironment)) +
           Footer(fmt::format("Example:\n  {}\n\nRun {} COMMAND --help for what a command takes, with an example.",
                              kExample, app.get_name()));
}

/// The options of the program that can stand behind a command and mean something there.
std::vector<std::string> SharedOptions(const CLI::App& command) {
    const CLI::App& program = *command.get_parent();
    std::vector<std::string> shared;
    for (const CLI::Option* option : VisibleOptions(program)) {
        if (option != program.get_help_ptr() && option != program.get_version_ptr()) {
            shared.push_back(Signature(*option));
        }
    }
    return shared;
}

std::string CommandEnd(const CLI::App& app) {
    return Footer(fmt::format("Every command also takes {}; see {} --help.", fmt::join(SharedOptions(app), ", "),
                              app.get_parent()->get_name())) +
           "\n" + Footer(app.get_footer()).substr(1);
}

}  // namespace

std::string HelpFormatter::make_help(const CLI::App* app, std::string /*name*/, CLI::AppFormatMode /*mode*/) const {
    const bool isProgram = app->get_parent() == nullptr;
    std::string text = fmt::format("{}\n\nUsage: {}\n", app->get_description(), Usage(*app));
    text += HelpSection("Commands", Rows(VisibleCommands(*app)));
    text += HelpSection("Arguments", Rows(Positionals(*app)));
    text += HelpSection(isProgram ? "Options, before or after the command" : "Options", Rows(VisibleOptions(*app)));
    return text + (isProgram ? ProgramEnd(*app) : CommandEnd(*app));
}

}  // namespace stmdcm
