#include "source_utilities/ReplaceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <utility>

#include "source_utilities/PosixFile.h"

namespace ZU_WEP {

namespace {

constexpr int MaxLinks = 40;
constexpr int MaxNameAttempts = 1000;
constexpr mode_t PermissionBits = 07777;

/// A file of a unique name, removed again unless it takes another one's place.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& directory, mode_t mode) {
        static std::atomic<unsigned> counter{0};
        for (int attempt = 0; attempt < MaxNameAttempts; ++attempt) {
            m_path = directory + "/.stmdcm-" + std::to_string(::getpid()) + "-" + std::to_string(++counter) + ".tmp";
            m_file = PosixFile::Open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode);
            if (m_file.IsOpen() || errno != EEXIST) {
                break;
            }
        }
        m_exists = m_file.IsOpen();
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (m_exists) {
            const int error = errno;
            ::unlink(m_path.c_str());
            errno = error;
        }
    }

    bool Exists() const { return m_exists; }

    bool TakeModeAndOwner(const struct stat& old) {
        struct stat own {};
        const int descriptor = m_file.Descriptor();
        if (::fstat(descriptor, &own) != 0) {
            return false;
        }
        const bool sameOwner = own.st_uid == old.st_uid && own.st_gid == old.st_gid;
        return (sameOwner || ::fchown(descriptor, old.st_uid, old.st_gid) == 0) &&
               ::fchmod(descriptor, old.st_mode & PermissionBits) == 0;
    }

    bool Fill(std::string_view content) { return m_file.WriteAt(0, {content}) && m_file.Sync() && m_file.Close(); }

    bool RenameTo(const std::string& target) {
        if (::rename(m_path.c_str(), target.c_str()) != 0) {
            return false;
        }
        m_exists = false;
        return true;
    }

  private:
    std::string m_path;
    PosixFile m_file;
    bool m_exists = false;
};

/// Not allowed here, as opposed to gone wrong.
bool IsRefusal(int error) { return error == EACCES || error == EPERM || error == EROFS || error == EBUSY; }

/// The name behind the symbolic links, which need not exist.
std::filesystem::path FollowLinks(std::filesystem::path path) {
    for (int links = 0; links < MaxLinks; ++links) {
        std::error_code error;
        const std::filesystem::path link = std::filesystem::read_symlink(path, error);
        if (error) {
            break;
        }
        path = path.parent_path() / link;
    }
    return path;
}

/// A directory that can't be opened for reading can't be synced; the rename counts all the same.
bool SyncDirectory(const std::string& directory) {
    const PosixFile file = PosixFile::Open(directory.c_str(), O_RDONLY | O_DIRECTORY);
    return !file.IsOpen() || file.Sync();
}

bool WriteInPlace(PosixFile& file, std::string_view content) {
    struct stat info {};
    if (::fstat(file.Descriptor(), &info) != 0) {
        return false;
    }
    // A full disk is met before the old content is lost.
    const bool written = S_ISREG(info.st_mode) ? file.Reserve(0, content.size()) && file.WriteAt(0, {content}) &&
                                                     file.Truncate(content.size())
                                               : file.Write(content);
    return written && file.Sync() && file.Close();
}

/// Gives nothing where the target has to be written in place.
std::optional<ReplaceResult> ReplaceWhole(const std::string& target, const std::string& directory,
                                          const std::optional<struct stat>& old, std::string_view content) {
    TemporaryFile temporary(directory, old ? S_IRUSR | S_IWUSR : 0666);
    if (!temporary.Exists()) {
        if (IsRefusal(errno)) {
            return std::nullopt;
        }
        return errno == ENOENT || errno == ENOTDIR ? ReplaceResult::CannotOpen : ReplaceResult::Failed;
    }
    if (old && !temporary.TakeModeAndOwner(*old)) {
        return std::nullopt;
    }
    if (!temporary.Fill(content)) {
        return ReplaceResult::Failed;
    }
    if (!temporary.RenameTo(target)) {
        return IsRefusal(errno) ? std::nullopt : std::optional(ReplaceResult::Failed);
    }
    return SyncDirectory(directory) ? ReplaceResult::Written : ReplaceResult::Failed;
}

}  // namespace

ReplaceResult ReplaceFile(const std::string& path, std::string_view content) {
    PosixFile file = PosixFile::Open(path.c_str(), O_WRONLY);
    std::optional<struct stat> old;
    if (file.IsOpen()) {
        if (::fstat(file.Descriptor(), &old.emplace()) != 0) {
            return ReplaceResult::Failed;
        }
    } else if (errno != ENOENT) {
        return ReplaceResult::CannotOpen;
    }
    if (!old || S_ISREG(old->st_mode)) {
        const std::filesystem::path target = FollowLinks(path);
        if (!target.has_filename()) {
            errno = ENOENT;
            return ReplaceResult::CannotOpen;
        }
        const std::filesystem::path directory = target.has_parent_path() ? target.parent_path() : ".";
        if (const auto result = ReplaceWhole(target.string(), directory.string(), old, content)) {
            return *result;
        }
    }
    if (!file.IsOpen()) {
        file = PosixFile::Open(path.c_str(), O_WRONLY | O_CREAT);
        if (!file.IsOpen()) {
            return ReplaceResult::CannotOpen;
        }
    }
    return WriteInPlace(file, content) ? ReplaceResult::Written : ReplaceResult::Failed;
}

}  // namespace ZU_WEP
