#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace stmdcm {

/// What completion offers for a value.
enum class ValueKind { Nothing, Choice, File, Directory, Property, Section };

struct ValueSyntax {
    ValueKind kind = ValueKind::Nothing;
    std::string_view extensions;  ///< of the files that fit, with blanks between them; empty: every file does
};

/// Told by the choices of the value, and else by what stands for it:
///
///   CAPTURE               a file .tdf
///   FILE, SETTINGS        a capture or a settings file; a positional without a type name is such a one too
///   OUT                   any file
///   FILE.so, FILE.json    a file of that extension
///   DIR                   a directory
///   NAME=VALUE            a property and its value
///   SECTION               the name of a section in the file that is named in front of it
ValueSyntax ValueSyntaxOf(const CLI::Option& option);

struct Candidate {
    std::string word;
    std::string description;  ///< one line, may be empty
};

/// The words that `option` takes where they can be listed; `value` is what is there of one already, and `positionals`
/// are the words in front of it that are no options.
std::vector<Candidate> ValueCandidates(const CLI::Option& option, const std::string& value,
                                       const std::vector<std::string>& positionals);

}  // namespace stmdcm
