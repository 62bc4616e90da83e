#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace stmdcm {

struct Candidate {
    std::string word;
    std::string description;  ///< one line, may be empty
};

/// The words that `option` takes where they can be listed; `value` is what is there of one already, and `positionals`
/// are the words in front of it that are no options.
std::vector<Candidate> ValueCandidates(const CLI::Option& option, const std::string& value,
                                       const std::vector<std::string>& positionals);

}  // namespace stmdcm
