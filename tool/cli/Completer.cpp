#include "tool/cli/Completer.h"

#include <algorithm>

#include "tool/cli/Syntax.h"
#include "tool/cli/ValueCandidates.h"

namespace stmdcm {

namespace {

constexpr char kOptionsEnd[] = "--";

/// Where a walk over the words has got to.
struct Place {
    const CLI::App* app;
    const CLI::Option* pending = nullptr;  ///< wants a value
    bool areOptionsOver = false;
    std::vector<std::string> positionals = {};

    bool IsOption(const std::string& word) const { return word.starts_with('-') && !areOptionsOver; }
    const CLI::Option* Positional() const;
    std::vector<const CLI::Option*> Options() const;
    const CLI::Option* Find(const std::string& word) const;
    void Take(const std::string& word);
    void TakePlain(const std::string& word);
};

/// The one that the next word goes to; null for none.
const CLI::Option* Place::Positional() const {
    const std::vector<const CLI::Option*> all = stmdcm::Positionals(*app);
    if (positionals.size() < all.size()) {
        return all[positionals.size()];
    }
    return !all.empty() && IsRepeatable(*all.back()) ? all.back() : nullptr;
}

/// A command takes those of the program too.
std::vector<const CLI::Option*> Place::Options() const {
    std::vector<const CLI::Option*> options;
    for (const CLI::App* level = app; level != nullptr; level = level->get_parent()) {
        for (const CLI::Option* option : VisibleOptions(*level)) {
            const auto isSame = [&](const CLI::Option* other) { return Names(*other) == Names(*option); };
            if (std::none_of(options.begin(), options.end(), isSame)) {
                options.push_back(option);
            }
        }
    }
    return options;
}

const CLI::Option* Place::Find(const std::string& word) const {
    const std::string name = word.substr(0, word.find('='));
    for (const CLI::Option* option : Options()) {
        const std::vector<std::string> names = Names(*option);
        if (std::find(names.begin(), names.end(), name) != names.end()) {
            return option;
        }
    }
    return nullptr;
}

void Place::Take(const std::string& word) {
    if (word == kOptionsEnd) {
        areOptionsOver = true;
        pending = nullptr;
    } else if (IsOption(word)) {
        const CLI::Option* option = Find(word);
        const bool wantsValue = option != nullptr && TakesValue(*option) && word.find('=') == std::string::npos;
        pending = wantsValue ? option : nullptr;
    } else if (pending != nullptr) {
        pending = pending->get_allow_extra_args() ? pending : nullptr;
    } else {
        TakePlain(word);
    }
}

void Place::TakePlain(const std::string& word) {
    for (const CLI::App* command : VisibleCommands(*app)) {
        if (command->get_name() == word) {
            app = command;
            return;
        }
    }
    positionals.push_back(word);
}

void KeepFitting(std::vector<Candidate>& candidates, const std::string& word) {
    std::erase_if(candidates, [&](const Candidate& candidate) { return !candidate.word.starts_with(word); });
}

Completion OfOptions(const Place& place) {
    Completion completion;
    for (const CLI::Option* option : place.Options()) {
        for (const std::string& name : Names(*option)) {
            completion.candidates.push_back({name, option->get_description()});
        }
    }
    return completion;
}

Completion OfCommands(const CLI::App& app) {
    Completion completion;
    for (const CLI::App* command : VisibleCommands(app)) {
        completion.candidates.push_back({command->get_name(), command->get_description()});
    }
    return completion;
}

/// `start` is what stands in front of the value in the same word, such as "--color=".
Completion OfValue(const CLI::Option& option, const std::string& start, const std::string& value, const Place& place) {
    Completion completion{ValueSyntaxOf(option), ValueCandidates(option, value, place.positionals)};
    for (Candidate& candidate : completion.candidates) {
        candidate.word.insert(0, start);
    }
    return completion;
}

Completion Next(const Place& place, const std::string& word) {
    const std::size_t equals = word.find('=');
    if (place.IsOption(word) && equals != std::string::npos) {
        const CLI::Option* option = place.Find(word);
        return option == nullptr || !TakesValue(*option)
                   ? Completion{}
                   : OfValue(*option, word.substr(0, equals + 1), word.substr(equals + 1), place);
    }
    if (place.IsOption(word)) {
        return OfOptions(place);
    }
    if (const CLI::Option* taker = place.pending != nullptr ? place.pending : place.Positional()) {
        return OfValue(*taker, "", word, place);
    }
    return OfCommands(*place.app);
}

}  // namespace

Completion Completer::Complete(const std::vector<std::string>& words) const {
    Place place{&m_app};
    const std::string word = words.empty() ? "" : words.back();
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        place.Take(words[i]);
    }
    Completion completion = Next(place, word);
    KeepFitting(completion.candidates, word);
    return completion;
}

}  // namespace stmdcm
