#include "source_utilities/Temporaries.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <memory>
#include <string_view>
#include <vector>

namespace ZU_WEP {

namespace {

constexpr int kMaxNameAttempts = 1000;
constexpr std::string_view kNameStart = ".stmdcm-";
constexpr std::string_view kNameEnd = ".tmp";

/// Whether it has ended, though its parent may not have taken note yet (proc(5)).
bool IsGone(pid_t process) {
    if (::kill(process, 0) != 0) {
        return errno == ESRCH;
    }
    const auto file = PosixFile::Open(("/proc/" + std::to_string(process) + "/stat").c_str(), O_RDONLY);
    char bytes[256];
    const std::string_view text(bytes, file.IsOpen() ? file.Read(bytes, sizeof bytes).value_or(0) : 0);
    return text.substr(std::min(text.rfind(')'), text.size())).starts_with(") Z");
}

/// Whether it is a temporary name, of a process that is gone.
bool IsLeftover(std::string_view name) {
    if (!name.starts_with(kNameStart) || !name.ends_with(kNameEnd)) {
        return false;
    }
    pid_t process = 0;
    unsigned count = 0;
    const char* const back = name.data() + name.size() - kNameEnd.size();
    const auto [end, failure] = std::from_chars(name.data() + kNameStart.size(), back, process);
    if (failure != std::errc() || end == back || *end != '-') {
        return false;
    }
    const auto [countEnd, countFailure] = std::from_chars(end + 1, back, count);
    return countFailure == std::errc() && countEnd == back && process > 0 && IsGone(process);
}

std::vector<std::string> LeftoversIn(const std::string& directory) {
    std::vector<std::string> names;
    const auto close = [](DIR* stream) { ::closedir(stream); };
    const std::unique_ptr<DIR, decltype(close)> stream(::opendir(directory.c_str()), close);
    while (const dirent* entry = stream != nullptr ? ::readdir(stream.get()) : nullptr) {
        if (IsLeftover(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

}  // namespace

bool MakeTemporary(const std::string& directory, const std::function<bool(const std::string& path)>& make) {
    static std::atomic<unsigned> counter{0};
    bool isMade = false;
    for (int attempt = 0; attempt < kMaxNameAttempts && !isMade && (attempt == 0 || errno == EEXIST); ++attempt) {
        isMade = make(directory + "/" + std::string(kNameStart) + std::to_string(::getpid()) + "-" +
                      std::to_string(++counter) + std::string(kNameEnd));
    }
    return isMade;
}

bool LockTemporary(const PosixFile& file) { return ::flock(file.Descriptor(), LOCK_EX | LOCK_NB) == 0; }

void RemoveLeftovers(const std::string& directory,
                     const std::function<void(const std::string& path)>& removeDirectory) {
    for (const std::string& name : LeftoversIn(directory)) {
        const std::string path = directory + "/" + name;
        const PosixFile file = PosixFile::OpenAtOnce(path.c_str(), O_RDONLY | O_NOFOLLOW);
        struct stat status {};
        if (!file.IsOpen() || ::fstat(file.Descriptor(), &status) != 0 || status.st_uid != ::geteuid() ||
            !LockTemporary(file)) {
            continue;
        }
        if (S_ISREG(status.st_mode)) {
            ::unlink(path.c_str());
        } else if (S_ISDIR(status.st_mode) && removeDirectory) {
            removeDirectory(path);
        }
    }
}

}  // namespace ZU_WEP
