#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <system_error>
#include <vector>

namespace stmdcm {

/// Looks for regular files below directories, by name, and shows each to who looks for more than a name. Follows no
/// symbolic link, so it comes to an end, and stays below.
class FileSearch {
  public:
    /// So many files and directories are looked at.
    static constexpr std::size_t kMaxEntries = 1'000'000;

    /// Hears of each regular file. Throws Failure, with any name, for one that can't be read.
    using OnFile = std::function<void(const std::string& path)>;

    /// Throws Failure for a directory that is none. One below it that can't be entered is passed over.
    FileSearch(const std::vector<std::string>& directories, const std::set<std::string>& names,
               OnFile onFile = nullptr);

    /// The paths, absolute and in order.
    const std::vector<std::string>& Found(const std::string& name) const;
    /// Sentences: what was not looked at.
    std::vector<std::string> Doubts() const;

  private:
    using Path = std::filesystem::path;

    /// Why the root itself could not be read is the caller's to tell.
    void LookBelow(const Path& root, std::error_code& whyUnread);
    void LookAt(const Path& entry, std::vector<Path>& directories);
    void NoteUnread(const Path& path, const std::error_code& error);
    void CountUnread(const std::string& place, const std::string& why);

    OnFile m_onFile;
    std::map<std::string, std::vector<std::string>> m_found;
    std::size_t m_entries = 0;
    std::size_t m_unread = 0;
    std::string m_firstUnread;  ///< and why
};

}  // namespace stmdcm
