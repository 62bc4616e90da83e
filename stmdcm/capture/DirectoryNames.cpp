#include "stmdcm/capture/DirectoryNames.h"

#include <dirent.h>

#include <cerrno>
#include <memory>

namespace stmdcm {

std::vector<std::string> NamesIn(const std::filesystem::path& directory, std::error_code& error) {
    const auto close = [](DIR* stream) { ::closedir(stream); };
    std::vector<std::string> names;
    errno = 0;
    const std::unique_ptr<DIR, decltype(close)> stream(::opendir(directory.c_str()), close);
    const auto next = [&] {
        errno = 0;  // which alone tells a failure from the end
        return ::readdir(stream.get());
    };
    while (const dirent* entry = stream != nullptr ? next() : nullptr) {
        if (const std::string name = entry->d_name; name != "." && name != "..") {
            names.push_back(name);
        }
    }
    error.assign(errno, std::generic_category());
    return names;
}

}  // namespace stmdcm
