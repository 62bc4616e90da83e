#include "source_utilities/TemporaryFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <memory>
#include <vector>

namespace ZU_WEP {

namespace {

constexpr int kMaxNameAttempts = 1000;

constexpr std::string_view kNameStart = ".stmdcm-";
constexpr std::string_view kNameEnd = ".tmp";

/// Whether it is a temporary file's name, of a process that is gone.
bool IsLeftover(std::string_view name) {
    if (!name.starts_with(kNameStart) || !name.ends_with(kNameEnd)) {
        return false;
    }
    pid_t process = 0;
    const char* const digits = name.data() + kNameStart.size();
    const auto [end, failure] = std::from_chars(digits, name.data() + name.size(), process);
    return failure == std::errc() && *end == '-' && process > 0 && ::kill(process, 0) != 0 && errno == ESRCH;
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

bool Lock(const PosixFile& file) { return ::flock(file.Descriptor(), LOCK_EX | LOCK_NB) == 0; }

}  // namespace

void TemporaryFile::RemoveLeftovers(const std::string& directory) {
    for (const std::string& name : LeftoversIn(directory)) {
        const std::string path = directory + "/" + name;
        const PosixFile file = PosixFile::OpenAtOnce(path.c_str(), O_RDONLY | O_NOFOLLOW);
        if (file.IsOpen() && Lock(file)) {
            ::unlink(path.c_str());
        }
    }
}

TemporaryFile::TemporaryFile(const std::string& directory, mode_t mode) {
    static std::atomic<unsigned> counter{0};
    for (int attempt = 0; attempt < kMaxNameAttempts; ++attempt) {
        m_path = directory + "/" + std::string(kNameStart) + std::to_string(::getpid()) + "-" +
                 std::to_string(++counter) + std::string(kNameEnd);
        m_file = PosixFile::Open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode);
        if (m_file.IsOpen() || errno != EEXIST) {
            break;
        }
    }
    m_exists = m_file.IsOpen();
    if (m_exists) {
        Lock(m_file);  // for those who don't see this process, such as another machine's
    }
}

TemporaryFile::~TemporaryFile() {
    if (m_exists) {
        const int error = errno;
        ::unlink(m_path.c_str());
        errno = error;
    }
}

bool TemporaryFile::Fill(std::string_view content) {
    return m_file.WriteAt(0, {content}) && m_file.Sync() && m_file.Close();
}

bool TemporaryFile::RenameTo(const std::string& target) {
    if (::rename(m_path.c_str(), target.c_str()) != 0) {
        return false;
    }
    m_exists = false;
    return true;
}

}  // namespace ZU_WEP
