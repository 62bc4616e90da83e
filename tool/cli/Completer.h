#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tool/cli/ValueKind.h"

namespace stmdcm {

struct Candidate {
    std::string word;
    std::string description;  ///< one line, may be empty
};

/// What can stand where the cursor is.
struct Completion {
    /// File and Directory: the shell offers its own. Else the candidates are all that fit.
    ValueSyntax syntax;
    std::vector<Candidate> candidates;
};

/// Finds out what a command line can go on with.
class Completer {
  public:
    /// `app` is the whole program's and must outlive this.
    explicit Completer(const CLI::App& app) : m_app(app) {}

    /// `words` are those behind the program's name; the last, which may be empty, is the one to complete.
    Completion Complete(const std::vector<std::string>& words) const;

  private:
    const CLI::App& m_app;
};

}  // namespace stmdcm
