#pragma once

#include <optional>
#include <string>
#include <vector>

namespace stmdcm {

/// "OLD=NEW": what was recorded as OLD, or lies under it, is now NEW, or under it. Whole names count: /a/b is not under
/// /a/bc.
class PathMapping {
  public:
    /// Throws Failure with the status Usage. NEW may be relative to the current directory.
    static PathMapping Parse(const std::string& text);

    /// The new path; nothing for a path that the mapping is not about.
    std::optional<std::string> Map(const std::string& path) const;
    /// The longer the nearer.
    std::size_t Reach() const { return m_old.size(); }

  private:
    PathMapping(std::string from, std::string to) : m_old(std::move(from)), m_new(std::move(to)) {}

    std::string m_old;  ///< neither ends in a slash; empty is the root
    std::string m_new;
};

/// By the mapping that reaches furthest into the path; of two that are alike the first.
std::optional<std::string> MapPath(const std::vector<PathMapping>& mappings, const std::string& path);

}  // namespace stmdcm
