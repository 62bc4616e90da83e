#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace stmdcm {

/// What completion offers for a value.
enum class ValueKind { Nothing, Choice, File, Directory, Assignment, Property, Part, Section, Item, Number, Cpu };

struct ValueSyntax {
    ValueKind kind = ValueKind::Nothing;
    std::string_view extensions;  ///< of the files that fit, with blanks between them; empty: every file does
    bool isOrFile = false;        ///< where no word fits, files do
};

/// Told by the choices of the value, and else by what stands for it (the table in the source). A positional without a
/// type name is a capture or a settings file.
ValueSyntax ValueSyntaxOf(const CLI::Option& option);

struct Candidate {
    std::string word;
    std::string description;  ///< one line, may be empty
};

/// What stands on the command line already.
struct GivenWords {
    std::vector<std::string> positionals;        ///< those that are no options
    std::map<std::string, std::string> options;  ///< by name, "--scenario", the values
};

/// The words that `option` takes where they can be listed; `value` is what is there of one already.
std::vector<Candidate> ValueCandidates(const CLI::Option& option, const std::string& value, const GivenWords& given);

}  // namespace stmdcm
