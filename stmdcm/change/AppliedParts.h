#pragma once

#include <set>
#include <string>
#include <vector>

#include "stmdcm/change/ConfigurationChange.h"
#include "stmdcm/reading/Reading.h"

namespace stmdcm {

/// Parts of a configuration, as a user names them.
class PartNames {
  public:
    /// Takes "properties", "usecases", "objects" and names of properties. Throws Failure, of kind Request, for others.
    explicit PartNames(const std::vector<std::string>& words);

    bool IsEmpty() const { return m_words.empty(); }
    bool HasProperty(const std::string& name) const { return Has("properties") || Has(name); }
    bool Has(const std::string& word) const { return m_words.count(word) != 0; }

  private:
    std::set<std::string> m_words;
};

/// What of a source goes into other captures; what is no part of it stays there as it is.
struct AppliedParts {
    std::set<std::string> properties;
    bool usecases = false;  ///< all of them, in the place of those that are there
    bool objects = false;   ///< the list of program images, in the place of the one that is there

    /// A capture names everything that it holds; a settings file the properties that it sets, and its use cases when
    /// it holds any.
    static AppliedParts NamedBy(const Reading& source);

    /// Leaves what `only` has, which is all where it is empty, and `except` has not.
    void Narrow(const PartNames& only, const PartNames& except);

    bool IsEmpty() const { return properties.empty() && !usecases && !objects; }
    /// Borrows the source.
    ConfigurationChange ChangeTo(const Reading& source) const;
};

}  // namespace stmdcm
