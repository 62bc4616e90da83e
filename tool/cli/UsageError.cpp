#include "tool/cli/UsageError.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "tool/cli/NearestWord.h"
#include "tool/cli/Syntax.h"

namespace stmdcm {

namespace {

/// The command that was parsed; null for none.
const CLI::App* Chosen(const CLI::App& app) {
    const std::vector<CLI::App*> parsed = app.get_subcommands();
    return parsed.empty() ? nullptr : parsed.back();
}

std::string Suggestion(const std::string& word, const std::vector<std::string>& words) {
    const std::string nearest = NearestWord(word, words);
    return nearest.empty() ? "" : fmt::format("; did you mean {}?", nearest);
}

std::vector<std::string> CommandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : VisibleCommands(app)) {
        names.push_back(command->get_name());
    }
    return names;
}

void AddOptionNames(const CLI::App& app, std::vector<std::string>& names) {
    for (const CLI::Option* option : VisibleOptions(app)) {
        const std::vector<std::string> own = Names(*option);
        names.insert(names.end(), own.begin(), own.end());
    }
}

std::string UnknownOption(const std::string& word, const CLI::App& app) {
    const std::string name = word.substr(0, word.find('='));
    std::vector<std::string> names;
    AddOptionNames(app, names);
    if (const CLI::App* command = Chosen(app)) {
        std::vector<std::string> own;
        AddOptionNames(*command, own);
        if (std::find(own.begin(), own.end(), name) != own.end()) {
            return fmt::format("the option {} belongs behind the command {}", name, command->get_name());
        }
        names.insert(names.end(), own.begin(), own.end());
    }
    return fmt::format("there is no option {}{}", name, Suggestion(name, names));
}

std::string Unexpected(const std::string& word, const CLI::App& app) {
    if (word.starts_with('-')) {
        return UnknownOption(word, app);
    }
    if (const CLI::App* command = Chosen(app)) {
        return fmt::format("the argument \"{}\" is one too many for {}", word, command->get_name());
    }
    return fmt::format("there is no command \"{}\"{}", word, Suggestion(word, CommandNames(app)));
}

std::string Missing(const CLI::App& app, const CLI::Error& error) {
    const CLI::App* command = Chosen(app);
    if (command == nullptr) {
        return "a command is required";
    }
    for (const CLI::Option* option : command->get_options()) {
        if (option->get_required() && option->count() == 0) {
            const std::vector<std::string> names = Names(*option);
            return (names.empty() ? Placeholder(*option) : names.back()) + " is required";
        }
    }
    return error.what();
}

/// The parser's words without the choices, which it adds to the name of a type.
std::string WithoutChoices(std::string sentence) {
    const std::size_t begin = sentence.find(":{");
    const std::size_t end = sentence.find('}', begin);
    return begin == std::string::npos || end == std::string::npos ? sentence : sentence.erase(begin, end + 1 - begin);
}

std::string Sentence(const CLI::App& app, const CLI::Error& error) {
    // A word that nothing takes is told first: what seems to be missing is often what it was meant to be.
    const std::vector<std::string> unexpected = app.remaining(true);
    if (!unexpected.empty()) {
        return Unexpected(unexpected.front(), app);
    }
    return error.get_name() == "RequiredError" ? Missing(app, error) : WithoutChoices(error.what());
}

}  // namespace

std::string UsageError(const CLI::App& app, const CLI::Error& error) {
    const CLI::App* command = Chosen(app);
    return fmt::format("{0}: {1}\nRun {0}{2} --help for more information.\n", app.get_name(), Sentence(app, error),
                       command == nullptr ? "" : " " + command->get_name());
}

}  // namespace stmdcm
