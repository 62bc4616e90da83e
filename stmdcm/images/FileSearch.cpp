#include "stmdcm/images/FileSearch.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

namespace fs = std::filesystem;

FileSearch::FileSearch(const std::vector<std::string>& directories, const std::set<std::string>& names) {
    for (const std::string& name : names) {
        m_found[name];
    }
    for (const std::string& directory : directories) {
        LookBelow(directory);
    }
    for (auto& [name, paths] : m_found) {
        std::sort(paths.begin(), paths.end());
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    }
}

void FileSearch::LookBelow(const std::string& directory) {
    std::error_code error;
    const fs::path root = fs::canonical(directory, error);
    fs::recursive_directory_iterator place(root, fs::directory_options::skip_permission_denied, error);
    if (error) {
        throw Failure(directory, fmt::format("there is no directory to search: {}", ZU_WEP::ErrnoText(error.value())));
    }
    for (; place != fs::recursive_directory_iterator(); place.increment(error)) {
        if (++m_entries > kMaxEntries) {
            m_isComplete = false;
            return;
        }
        std::error_code gone;
        const auto wanted = m_found.find(place->path().filename().string());
        if (wanted != m_found.end() && fs::is_regular_file(place->symlink_status(gone))) {
            wanted->second.push_back(place->path().string());
        }
    }
    m_isComplete = m_isComplete && !error;
}

const std::vector<std::string>& FileSearch::Found(const std::string& name) const {
    static const std::vector<std::string> none;
    const auto found = m_found.find(name);
    return found == m_found.end() ? none : found->second;
}

}  // namespace stmdcm
