#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Palette.h"
#include "tool/render/Selection.h"

namespace stmdcm {

/// Tells what a file holds.
struct ShowReport {
    const Reading& loaded;
    Selection selection;
    std::vector<std::string> doubts;
    bool isOneOfMany;
    const std::vector<std::string>& wanted;  ///< properties; none: what is selected

    /// What is asked for, as far as the file holds it, and the doubts about that. Borrows the reading and `wanted`.
    static ShowReport Of(const Reading& loaded, Selection asked, const std::vector<std::string>& wanted,
                         bool isOneOfMany = false);

    std::string Text(const Palette& palette) const;
    JsonLine Document() const;

  private:
    /// In the order in which they are wanted.
    std::vector<Property> Wanted() const;
    /// Numbers as settings text has them, so "set" takes them. A file that says nothing has its line, too.
    std::string Values() const;
    void WriteConfiguration(JsonWriter& out) const;
};

}  // namespace stmdcm
