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

FileSearch::FileSearch(const std::vector<std::string>& directories, const std::set<std::string>& names, OnFile onFile)
    : m_onFile(std::move(onFile)) {
    for (const std::string& name : names) {
        m_found[name];
    }
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
    for (auto& [name, paths] : m_found) {
        std::sort(paths.begin(), paths.end());
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
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
            LookAt(directory / name, directories);
        }
        if (directory == root) {
            whyUnread = error;
        } else {
            NoteUnread(directory, error);
        }
    }
}

void FileSearch::LookAt(const Path& entry, std::vector<Path>& directories) {
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
    const std::string path = entry.string();
    const auto wanted = m_found.find(entry.filename().string());
    if (wanted != m_found.end()) {
        wanted->second.push_back(path);
    }
    if (m_onFile) {
        try {
            m_onFile(path);
        } catch (const Failure& failure) {
            CountUnread(path, failure.Cause());
        }
    }
}

void FileSearch::NoteUnread(const Path& path, const std::error_code& error) {
    const bool isGone = error == std::errc::no_such_file_or_directory;
    if (error && !isGone) {
        CountUnread(path.string(), ZU_WEP::ErrnoText(error.value()));
    }
}

void FileSearch::CountUnread(const std::string& place, const std::string& why) {
    if (m_unread++ == 0) {
        m_firstUnread = fmt::format("{}: {}", Shown(place), why);
    }
}

std::vector<std::string> FileSearch::Doubts() const {
    std::vector<std::string> doubts;
    if (m_entries > kMaxEntries) {
        doubts.push_back(fmt::format("the search ended after {} files; name a directory with fewer", kMaxEntries));
    }
    if (m_unread > 0) {
        doubts.push_back(
            fmt::format("{} could not be searched, such as {}", Counted(m_unread, "place"), m_firstUnread));
    }
    return doubts;
}

const std::vector<std::string>& FileSearch::Found(const std::string& name) const {
    static const std::vector<std::string> none;
    const auto found = m_found.find(name);
    return found == m_found.end() ? none : found->second;
}

}  // namespace stmdcm
