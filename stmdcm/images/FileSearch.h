#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

namespace stmdcm {

/// The regular files below directories, looked for once. Follows no symbolic link, so it comes to an end, and stays
/// below.
class FileSearch {
  public:
    /// So many files and directories are looked at.
    static constexpr std::size_t kMaxEntries = 1'000'000;

    /// Throws Failure for a directory that is none. One below it that can't be entered is passed over.
    explicit FileSearch(const std::vector<std::string>& directories);

    /// The paths of those of that name, absolute, in order and each once.
    std::vector<std::string> Found(const std::string& name) const;
    /// Calls `onFile` with the path of each. It may throw Failure, with any name, for one that can't be read, of which
    /// the sentences about what was not looked at come back.
    std::vector<std::string> Each(const std::function<void(const std::string& path)>& onFile) const;
    /// The same sentences without reading any.
    std::vector<std::string> Doubts() const { return Doubts(m_unread); }

  private:
    using Path = std::filesystem::path;

    /// What could not be searched.
    struct Unread {
        std::size_t count = 0;
        std::string first = {};  ///< and why

        void Add(const std::string& place, const std::string& why);
    };
    /// What is below a directory is most of what there is, so its name is kept once.
    struct Entry {
        std::size_t directory;
        std::string name;
    };

    /// Why the root itself could not be read is the caller's to tell.
    void LookBelow(const Path& root, std::error_code& whyUnread);
    void LookAt(const Path& directory, const std::string& name, std::vector<Path>& directories);
    void NoteUnread(const Path& path, const std::error_code& error);
    std::string PathOf(const Entry& entry) const;
    std::vector<std::string> Doubts(const Unread& unread) const;

    std::vector<Path> m_directories;  ///< that hold files
    std::vector<Entry> m_files;
    std::size_t m_entries = 0;
    Unread m_unread;
};

}  // namespace stmdcm
