#include "tool/cli/Syntax.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace stmdcm {

namespace {

constexpr char kOpening[] = ":{";

/// Of a type that the parser named itself.
bool HasPlainType(const std::string& type) {
    static constexpr const char* kPlain[] = {"", "TEXT", "INT", "UINT", "FLOAT", "BOOLEAN", "ENUM"};
    return std::find(std::begin(kPlain), std::end(kPlain), type) != std::end(kPlain);
}

std::string Argument(const CLI::Option& positional) {
    const std::string name = Placeholder(positional) + (IsRepeatable(positional) ? "..." : "");
    return positional.get_required() ? name : "[" + name + "]";
}

}  // namespace

std::vector<const CLI::App*> VisibleCommands(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

std::vector<const CLI::Option*> VisibleOptions(const CLI::App& app) {
    return app.get_options(
        [](const CLI::Option* option) { return option->nonpositional() && !option->get_group().empty(); });
}

std::vector<const CLI::Option*> Positionals(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<std::string> Names(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) {
        names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

bool TakesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

bool IsRepeatable(const CLI::Option& option) { return option.get_items_expected_max() > 1; }

std::string Placeholder(const CLI::Option& option) {
    // The parser adds the checks of a value to the name of its type: "WHEN:{auto,always,never}".
    const std::string type = option.get_type_name();
    const std::string name = type.substr(0, type.find(':'));
    return HasPlainType(name) && option.get_positional() ? option.get_name(true) : name;
}

std::vector<std::string> Choices(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::size_t begin = type.find(kOpening);
    const std::size_t end = type.find('}', begin);
    if (begin == std::string::npos || end == std::string::npos) {
        return {};
    }
    const std::size_t first = begin + std::char_traits<char>::length(kOpening);
    return CLI::detail::split(type.substr(first, end - first), ',');
}

std::string Signature(const CLI::Option& option) {
    const std::vector<std::string> names = Names(option);
    if (names.empty()) {
        return Placeholder(option) + (IsRepeatable(option) ? "..." : "");
    }
    const char* const more = option.get_delimiter() == ',' ? ",..." : "";
    return fmt::format("{}{}", fmt::join(names, ", "), TakesValue(option) ? " " + Placeholder(option) + more : "");
}

std::string Usage(const CLI::App& app) {
    std::string usage = app.get_parent() == nullptr ? "" : app.get_parent()->get_name() + " ";
    usage += app.get_name() + " [OPTIONS]";
    for (const CLI::Option* option : VisibleOptions(app)) {
        usage += option->get_required() ? " " + Signature(*option) : "";
    }
    for (const CLI::Option* positional : Positionals(app)) {
        usage += " " + Argument(*positional);
    }
    return VisibleCommands(app).empty() ? usage : usage + " COMMAND ...";
}

}  // namespace stmdcm
