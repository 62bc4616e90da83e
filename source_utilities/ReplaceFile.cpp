#include "source_utilities/ReplaceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "source_utilities/FileMetadata.h"
#include "source_utilities/PosixFile.h"
#include "source_utilities/TemporaryFile.h"
#include "source_utilities/WriteSignalBlock.h"

namespace ZU_WEP {

namespace {

constexpr int kMaxLinks = 40;

/// Not allowed or not possible here, as opposed to gone wrong.
bool IsRefusal(int error) {
    return error == EACCES || error == EPERM || error == EROFS || error == EBUSY || error == ENAMETOOLONG;
}

bool IsStorageFailure(int error) { return error == ENOSPC || error == EDQUOT || error == EIO; }

ReplaceResult OpenFailure() { return IsStorageFailure(errno) ? ReplaceResult::Failed : ReplaceResult::CannotOpen; }

/// The text, built when it is asked for the first time.
class LazyText {
  public:
    explicit LazyText(const std::function<std::string()>& build) : m_build(build) {}

    const std::string& Get() {
        if (!m_text) {
            m_text = m_build();
        }
        return *m_text;
    }

  private:
    const std::function<std::string()>& m_build;
    std::optional<std::string> m_text;
};

/// The name behind the symbolic links, which need not exist.
std::filesystem::path FollowLinks(std::filesystem::path path) {
    for (int links = 0; links < kMaxLinks; ++links) {
        std::error_code error;
        const std::filesystem::path link = std::filesystem::read_symlink(path, error);
        if (error) {
            break;
        }
        path = path.parent_path() / link;
    }
    return path;
}

/// Links below /proc show names that other files have, or none.
bool IsNameOf(const std::string& path, const struct stat& file) {
    struct stat found {};
    return ::lstat(path.c_str(), &found) == 0 && found.st_dev == file.st_dev && found.st_ino == file.st_ino;
}

/// A directory that can't be opened for reading can't be synced; the rename counts all the same.
bool SyncDirectory(const std::string& directory) {
    const PosixFile file = PosixFile::Open(directory.c_str(), O_RDONLY | O_DIRECTORY);
    return !file.IsOpen() || file.Sync();
}

/// Until the file is cut there are line feeds behind the new content, not the rest of a longer old one.
bool Overwrite(const PosixFile& file, std::size_t oldSize, std::string_view text) {
    const std::string padding(oldSize - std::min(oldSize, text.size()), '\n');
    // A full disk is met before the old content is lost.
    return file.Reserve(0, text.size() + padding.size()) && file.WriteAt(0, {text, padding}) &&
           file.Truncate(text.size());
}

bool WriteInPlace(PosixFile& file, std::string_view text) {
    const WriteSignalBlock block;
    struct stat info {};
    if (::fstat(file.Descriptor(), &info) != 0) {
        return false;
    }
    const bool written =
        S_ISREG(info.st_mode) ? Overwrite(file, static_cast<std::size_t>(info.st_size), text) : file.Write(text);
    return written && file.Sync() && file.Close();
}

/// What is there before.
struct OldFile {
    struct stat status;
    FileMetadata metadata;
};

/// Gives nothing where the target has to be written in place.
std::optional<ReplaceResult> ReplaceWhole(const std::string& path, const std::optional<OldFile>& old, LazyText& text) {
    const std::filesystem::path target = FollowLinks(path);
    if (old && !IsNameOf(target, old->status)) {
        return std::nullopt;
    }
    if (!target.has_filename()) {
        errno = ENOENT;
        return ReplaceResult::CannotOpen;
    }
    const std::string directory = target.has_parent_path() ? target.parent_path().string() : ".";
    TemporaryFile temporary(directory, old ? S_IRUSR | S_IWUSR : 0666);
    if (!temporary.Exists()) {
        return IsRefusal(errno) ? std::nullopt : std::optional(OpenFailure());
    }
    const auto losses = old ? old->metadata.GiveTo(temporary.File()) : std::vector<FileMetadata::Loss>();
    if (!losses.empty()) {
        errno = losses.front().error;
        return IsStorageFailure(errno) ? std::optional(ReplaceResult::Failed) : std::nullopt;
    }
    if (!temporary.Fill(text.Get())) {
        return ReplaceResult::Failed;
    }
    if (!temporary.RenameTo(target)) {
        return temporary.Exists() && IsRefusal(errno) ? std::nullopt : std::optional(ReplaceResult::Failed);
    }
    return SyncDirectory(directory) ? ReplaceResult::Written : ReplaceResult::Failed;
}

}  // namespace

ReplaceResult ReplaceFile(const std::string& path, const std::function<std::string()>& build) {
    PosixFile file = PosixFile::OpenAtOnce(path.c_str(), O_WRONLY);
    if (!file.IsOpen() && errno != ENOENT) {
        return OpenFailure();
    }
    struct stat status {};
    if (file.IsOpen() && ::fstat(file.Descriptor(), &status) != 0) {
        return ReplaceResult::Failed;
    }
    LazyText text(build);
    std::optional<OldFile> old;
    if (file.IsOpen()) {
        old = {status, FileMetadata(file, status)};
    }
    if (!old || S_ISREG(status.st_mode)) {
        file.Close();  // its descriptor may be the only free one
        if (const auto result = ReplaceWhole(path, old, text)) {
            return *result;
        }
        file = PosixFile::OpenAtOnce(path.c_str(), old ? O_WRONLY : O_WRONLY | O_CREAT);
        if (!file.IsOpen()) {
            return OpenFailure();
        }
    }
    return WriteInPlace(file, text.Get()) ? ReplaceResult::Written : ReplaceResult::Failed;
}

}  // namespace ZU_WEP
