#pragma once

#include <array>
#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"
#include "tool/render/Count.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// By its name, which is that of a severity.
Severity ToSeverity(const std::string& name);

/// Tells the kinds of findings.
struct KindList {
    static std::string Text(const Palette& palette);
    static Json Document();
};

/// Tells what was found in a file.
struct CheckReport {
    const Reading& file;
    Severity least;                           ///< findings below are left out, in the counts too
    const std::vector<std::string>& ignored;  ///< identifiers of findings that are, too

    /// Whether anything that is shown is more than a note.
    bool HasProblem() const;
    /// Of each severity.
    std::vector<Count> Counts() const;
    std::string Text(const Palette& palette) const;
    /// docs/json.md
    JsonLine Document() const;

  private:
    bool IsShown(const FindingKind& kind) const;
    /// How many of each severity there are.
    std::array<std::size_t, 3> Numbers() const;
    /// Calls `tell` with each kind of which there are more than are told, and how many more.
    template <class Tell>
    void EachUntold(Tell tell) const;
    void WriteFile(JsonWriter& out) const;
};

}  // namespace stmdcm
