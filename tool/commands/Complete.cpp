#include <fmt/format.h>

#include <algorithm>

#include "tool/cli/Syntax.h"
#include "tool/cli/ValueKind.h"
#include "tool/commands/CommandTable.h"

namespace stmdcm {

namespace {

constexpr char kOptionsEnd[] = "--";

/// What can stand where the cursor is.
struct Completion {
    /// File and Directory: the shell offers its own. Else the candidates are all that fit.
    ValueSyntax syntax;
    std::vector<Candidate> candidates;
};

/// Where a walk over the words has got to.
struct Cursor {
    const CLI::App* app;
    const CLI::Option* pending = nullptr;  ///< wants a value
    bool areOptionsOver = false;
    GivenWords given = {};

    bool IsOption(const std::string& word) const { return word.starts_with('-') && !areOptionsOver; }

    /// The one that the next word goes to; null for none.
    const CLI::Option* Positional() const {
        const std::vector<const CLI::Option*> all = stmdcm::Positionals(*app);
        if (given.positionals.size() < all.size()) {
            return all[given.positionals.size()];
        }
        const bool isAnyRepeatable =
            std::any_of(all.begin(), all.end(), [](const auto* each) { return IsRepeatable(*each); });
        return isAnyRepeatable ? all.back() : nullptr;
    }

    /// A command takes those of the program too.
    std::vector<const CLI::Option*> Options() const {
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

    const CLI::Option* Find(const std::string& word) const {
        const std::string name = word.substr(0, word.find('='));
        for (const CLI::Option* option : Options()) {
            const std::vector<std::string> names = Names(*option);
            if (std::find(names.begin(), names.end(), name) != names.end()) {
                return option;
            }
        }
        return nullptr;
    }

    void Take(const std::string& word) {
        if (word == kOptionsEnd) {
            areOptionsOver = true;
            pending = nullptr;
        } else if (IsOption(word)) {
            const CLI::Option* option = Find(word);
            const std::size_t equals = word.find('=');
            const bool takesValue = option != nullptr && TakesValue(*option);
            pending = takesValue && equals == std::string::npos ? option : nullptr;
            if (takesValue && equals != std::string::npos) {
                given.options[Names(*option).back()] = word.substr(equals + 1);
            }
        } else if (pending != nullptr) {
            given.options[Names(*pending).back()] = word;
            pending = pending->get_allow_extra_args() ? pending : nullptr;
        } else {
            TakePlain(word);
        }
    }

    void TakePlain(const std::string& word) {
        for (const CLI::App* command : VisibleCommands(*app)) {
            if (command->get_name() == word) {
                app = command;
                return;
            }
        }
        given.positionals.push_back(word);
    }
};

Completion OfOptions(const Cursor& place) {
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
Completion OfValue(const CLI::Option& option, std::string start, std::string value, const Cursor& place) {
    const char delimiter = option.get_delimiter();  // between the values of a list
    if (const std::size_t last = value.rfind(delimiter); delimiter != '\0' && last != std::string::npos) {
        start += value.substr(0, last + 1);
        value.erase(0, last + 1);
    }
    Completion completion{ValueSyntaxOf(option), ValueCandidates(option, value, place.given)};
    for (Candidate& candidate : completion.candidates) {
        candidate.word.insert(0, start);
    }
    return completion;
}

Completion Next(const Cursor& place, const std::string& word) {
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

/// `words` are those behind the name of the program `app`; the last, which may be empty, is the one to complete.
Completion Complete(const CLI::App& app, const std::vector<std::string>& words) {
    Cursor place{&app};
    const std::string word = words.empty() ? "" : words.back();
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        place.Take(words[i]);
    }
    Completion completion = Next(place, word);
    std::erase_if(completion.candidates, [&](const Candidate& candidate) { return !candidate.word.starts_with(word); });
    if (completion.candidates.empty() && completion.syntax.isOrFile && word.find('=') == std::string::npos) {
        completion.syntax.kind = ValueKind::File;
    }
    return completion;
}

std::string SyntaxName(const ValueSyntax& syntax) {
    switch (syntax.kind) {
        case ValueKind::File:
            return fmt::format("files {}", syntax.extensions);
        case ValueKind::Directory:
            return "directories";
        default:
            return "words";
    }
}

/// Tells a completion script what a command line can go on with.
class CompleteWords final : public Command {
  public:
    void Declare(CLI::App& app) override {
        m_program = app.get_parent();
        app.add_option("WORD", m_words, "The words behind the program's name, the one to complete last");
        app.footer(
            "The first line is \"words\", \"directories\", or \"files\" with the extensions that fit. Behind \"words\" "
            "each line is a word that can stand there, a tab and what it means.\n\nExample:\n"
            "  stmdcm complete -- --color a");
    }

    ExitStatus Run(const Context& context) override {
        const Completion completion = Complete(*m_program, m_words);
        std::string text = SyntaxName(completion.syntax) + "\n";
        for (const auto& [word, description] : completion.candidates) {
            text += fmt::format("{}\t{}\n", word, description);
        }
        context.console.Print(text);
        return ExitStatus::Done;
    }

    bool HasDocument() const override { return false; }

  private:
    const CLI::App* m_program = nullptr;
    std::vector<std::string> m_words;
};

}  // namespace

std::unique_ptr<Command> MakeComplete() { return std::make_unique<CompleteWords>(); }

}  // namespace stmdcm
