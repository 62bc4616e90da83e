#include "tool/cli/UsageError.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "stmdcm/reading/Words.h"
#include "tool/cli/Syntax.h"

namespace stmdcm {

namespace {

constexpr std::size_t kShortestStart = 3;

/// How many letters must be put in, taken out, changed or swapped with the next.
std::size_t Distance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> cost(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                cost[i][j] = i + j;
                continue;
            }
            const std::size_t changed = cost[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, changed});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
            }
        }
    }
    return cost[a.size()][b.size()];
}

bool IsStart(const std::string& word, const std::string& candidate) {
    return word.size() >= kShortestStart && word.find_first_not_of('-') != std::string::npos &&
           candidate.starts_with(word);
}

/// The one of `words` that `word` may have been meant to be: it begins so, or a few letters differ or are swapped.
/// Empty when none is near.
std::string NearestWord(const std::string& word, const std::vector<std::string>& words) {
    std::string nearest;
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (const std::string& candidate : words) {
        const std::size_t distance = IsStart(word, candidate) ? 1 : Distance(word, candidate);
        const std::size_t letters = candidate.size() - std::min(candidate.size(), candidate.find_first_not_of('-'));
        if (distance < least && 3 * distance <= letters + 1) {
            nearest = candidate;
            least = distance;
        }
    }
    return nearest;
}

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

std::vector<std::string> OptionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : VisibleOptions(app)) {
        const std::vector<std::string> own = Names(*option);
        names.insert(names.end(), own.begin(), own.end());
    }
    return names;
}

std::string UnknownOption(const std::string& word, const CLI::App& app) {
    const std::string name = word.substr(0, word.find('='));
    std::vector<std::string> names = OptionNames(app);
    if (const CLI::App* command = Chosen(app)) {
        const std::vector<std::string> own = OptionNames(*command);
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

/// The parser begins with the name of the option: "--color: 1 required WHEN missing".
std::string WrongCount(const CLI::App& app, const std::string& sentence) {
    const std::string name = sentence.substr(0, sentence.find_first_of(": "));
    for (const CLI::App* level : {Chosen(app), &app}) {
        const CLI::Option* option = level == nullptr ? nullptr : level->get_option_no_throw(name);
        if (option != nullptr && option->nonpositional()) {
            return TakesValue(*option) ? fmt::format("{} needs a value, {}", name, Placeholder(*option))
                                       : fmt::format("{} takes no value", name);
        }
    }
    return sentence;
}

std::string Sentence(const CLI::App& app, const CLI::Error& error) {
    // A word that nothing takes is told first: what seems to be missing is often what it was meant to be.
    const std::vector<std::string> unexpected = app.remaining(true);
    if (!unexpected.empty()) {
        return Unexpected(unexpected.front(), app);
    }
    if (error.get_name() == "ArgumentMismatch" || error.get_name() == "ConversionError") {
        return WrongCount(app, error.what());
    }
    return error.get_name() == "RequiredError" ? Missing(app, error) : error.what();
}

}  // namespace

std::string UsageError(const CLI::App& app, const CLI::Error& error) {
    const CLI::App* command = Chosen(app);
    return fmt::format("{0}: {1}\nRun {0}{2} --help for more information.\n", app.get_name(),
                       Escaped(Sentence(app, error)), command == nullptr ? "" : " " + command->get_name());
}

}  // namespace stmdcm
