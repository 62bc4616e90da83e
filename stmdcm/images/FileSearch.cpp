#include "stmdcm/images/FileSearch.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"
#include "stmdcm/capture/DirectoryNames.h"
#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/Words.h"

namespace stmdcm {

namespace fs = std::filesystem;

FileSearch::FileSearch(const std::vector<std::string>& directories) {
    for (const std::string& directory : directories) {
        std::error_code error;
        const fs::path root = fs::canonical(directory, error);
        if (!error) {
            LookBelow(root, error);
        }
        if (error) {
            throw Failure(directory,
                          fmt::format("there is no directory to search: {}", ZU_WEP::ErrnoText(error.value())));
        }
    }
}

void FileSearch::LookBelow(const Path& root, std::error_code& whyUnread) {
    std::vector<Path> directories{root};
    while (!directories.empty()) {
        const Path directory = std::move(directories.back());
        directories.pop_back();
        std::error_code error;
        for (const std::string& name : NamesIn(directory, error)) {
            if (++m_entries > kMaxEntries) {
                return;
            }
            LookAt(directory, name, directories);
        }
        if (directory == root) {
            whyUnread = error;
        } else {
            NoteUnread(directory, error);
        }
    }
}

void FileSearch::LookAt(const Path& directory, const std::string& name, std::vector<Path>& directories) {
    const Path entry = directory / name;
    std::error_code error;
    const fs::file_status status = fs::symlink_status(entry, error);
    NoteUnread(entry, error);
    if (fs::is_directory(status)) {
        directories.push_back(entry);
        return;
    }
    if (!fs::is_regular_file(status)) {
        return;
    }
    if (m_directories.empty() || m_directories.back() != directory) {
        m_directories.push_back(directory);
    }
    m_files.push_back({m_directories.size() - 1, name});
}

void FileSearch::NoteUnread(const Path& path, const std::error_code& error) {
    const bool isGone = error == std::errc::no_such_file_or_directory;
    if (error && !isGone) {
        m_unread.Add(path.string(), ZU_WEP::ErrnoText(error.value()));
    }
}

void FileSearch::Unread::Add(const std::string& place, const std::string& why) {
    if (count++ == 0) {
        first = fmt::format("{}: {}", Shown(place), why);
    }
}

std::vector<std::string> FileSearch::Doubts(const Unread& unread) const {
    std::vector<std::string> doubts;
    if (m_entries > kMaxEntries) {
        doubts.push_back(fmt::format("the search ended after {} files; name a directory with fewer", kMaxEntries));
    }
    if (unread.count > 0) {
        doubts.push_back(
            fmt::format("{} could not be searched, such as {}", Counted(unread.count, "place"), unread.first));
    }
    return doubts;
}

std::string FileSearch::PathOf(const Entry& entry) const {
    return (m_directories[entry.directory] / entry.name).string();
}

std::vector<std::string> FileSearch::Found(const std::string& name) const {
    std::vector<std::string> paths;
    for (const Entry& entry : m_files) {
        if (entry.name == name) {
            paths.push_back(PathOf(entry));
        }
    }
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    return paths;
}

std::vector<std::string> FileSearch::Each(const std::function<void(const std::string& path)>& onFile) const {
    Unread unread = m_unread;
    for (const Entry& entry : m_files) {
        const std::string path = PathOf(entry);
        try {
            onFile(path);
        } catch (const Failure& failure) {
            unread.Add(path, failure.Cause());
        }
    }
    return Doubts(unread);
}

}  // namespace stmdcm
