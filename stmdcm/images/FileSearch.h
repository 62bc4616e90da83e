#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace stmdcm {

/// Looks for regular files by name below directories. Follows no symbolic link, so it comes to an end, and stays below.
class FileSearch {
  public:
    /// So many files and directories are looked at.
    static constexpr std::size_t kMaxEntries = 1'000'000;

    /// Throws Failure for a directory that is none. What can't be entered is passed over.
    FileSearch(const std::vector<std::string>& directories, const std::set<std::string>& names);

    /// The paths, absolute and in order.
    const std::vector<std::string>& Found(const std::string& name) const;
    /// Whether everything was looked at.
    bool IsComplete() const { return m_isComplete; }

  private:
    void LookBelow(const std::string& directory);

    std::map<std::string, std::vector<std::string>> m_found;
    std::size_t m_entries = 0;
    bool m_isComplete = true;
};

}  // namespace stmdcm
