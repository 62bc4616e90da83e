#pragma once

#include <optional>
#include <string>
#include <vector>

#include "stmdcm/reading/Configuration.h"

namespace stmdcm {

/// One thing in which two configurations differ. Values are in words.
struct Difference {
    std::string kind;                 ///< "property", "SC use case" and so on
    std::string item;                 ///< which of them
    std::string field;                ///< empty: the whole item
    std::optional<std::string> left;  ///< nothing: the left configuration does not have it
    std::optional<std::string> right;

    /// That `path` does not hold the left value: "FILE: property X, value: 1 has become 2".
    std::string Sentence(const std::string& path) const;
};

/// Every difference, properties first. Items are matched by what they are (use cases by job and module), not by their
/// place; of several that are alike the first is matched with the first, and so on. Derived fields are left out.
std::vector<Difference> Compare(const Configuration& left, const Configuration& right);

}  // namespace stmdcm
