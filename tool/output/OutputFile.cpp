#include "tool/output/OutputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "source_utilities/FileMetadata.h"
#include "source_utilities/Temporaries.h"
#include "stmdcm/capture/InterruptBlock.h"
#include "stmdcm/reading/Words.h"

namespace stmdcm {

namespace fs = std::filesystem;
using ZU_WEP::FileMetadata;
using ZU_WEP::PosixFile;

namespace {

constexpr mode_t kNewFile = 0666;
constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;

fs::path DirectoryOf(const fs::path& target) { return target.has_parent_path() ? target.parent_path() : "."; }

bool IsSameFile(const std::string& path, const struct stat& other) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && info.st_dev == other.st_dev && info.st_ino == other.st_ino;
}

/// As far as it can be looked at without the right to read it.
PosixFile OpenToLookAt(const fs::path& path) {
    PosixFile file = PosixFile::OpenAtOnce(path.c_str(), O_RDONLY);
    return !file.IsOpen() && errno == EACCES ? PosixFile::Open(path.c_str(), O_PATH) : std::move(file);
}

/// `path`: as the user names it.
FileMetadata MetadataOf(const PosixFile& file, const std::string& path) {
    struct stat status {};
    if (!file.IsOpen() || ::fstat(file.Descriptor(), &status) != 0) {
        const int error = errno;
        throw Failure(path, fmt::format("the file can't be looked at: {}", ZU_WEP::ErrnoText(error)));
    }
    return {file, status};
}

}  // namespace

OutputFile::OutputFile(std::string path, bool force, const std::vector<std::string>& inputs, const PosixFile* source)
    : m_path(std::move(path)) {
    const bool isThere = CheckTarget(force, inputs);
    const auto old = isThere ? std::optional(MetadataOf(OpenToLookAt(m_target), m_path)) : std::nullopt;
    const auto rights = source != nullptr ? std::optional(MetadataOf(*source, inputs.front())) : std::nullopt;
    MakeTemporary(old || rights ? kPrivate : kNewFile);
    if (old) {
        const mode_t most = rights ? rights->ModeWithoutAcl() : FileMetadata::kPermissionBits;
        TellLosses(old->GiveTo(m_file, FileMetadata::Part::All, most));
    } else if (rights) {
        rights->GiveTo(m_file, FileMetadata::Part::Rights);  // what is lost of them is given to nobody
    }
    KeepReadable();
}

OutputFile::~OutputFile() {
    if (!m_temporary.empty()) {
        ::unlink(m_temporary.c_str());
    }
}

/// Whether a file is there.
bool OutputFile::CheckTarget(bool force, const std::vector<std::string>& inputs) {
    if (m_path == "-") {
        throw Failure("-: this is standard output, but the result is read back before it takes its place; name a file",
                      Failure::Kind::Request);
    }
    struct stat info {};
    m_target = m_path;
    if (::stat(m_path.c_str(), &info) != 0) {
        if (errno != ENOENT && errno != ENOTDIR) {
            Fail("the file can't be looked at");
        }
        m_replaces = ::lstat(m_path.c_str(), &info) == 0;
        if (m_replaces && !force) {
            throw Failure(m_path, "this is a link to nothing; name another file, or use --force");
        }
        return false;
    }
    for (const std::string& input : inputs) {
        RefuseInput(input);
    }
    if (!S_ISREG(info.st_mode)) {
        throw Failure(m_path, fmt::format("this is {}; name a file",
                                          S_ISDIR(info.st_mode) ? "a directory" : "not a regular file"));
    }
    if (!force) {
        throw Failure(m_path, "the file is there already; name another one, or use --force");
    }
    m_target = fs::canonical(m_path);
    m_replaces = true;
    return true;
}

void OutputFile::RefuseInput(const std::string& input) const {
    struct stat there {};
    if (::stat(m_path.c_str(), &there) == 0 && IsSameFile(input, there)) {
        throw Failure(m_path, fmt::format("this is the input, {}; name another file", Shown(input)));
    }
}

void OutputFile::MakeTemporary(mode_t mode) {
    const std::string directory = DirectoryOf(m_target).string();
    ZU_WEP::RemoveLeftovers(directory);
    m_file = PosixFile::Open(directory.c_str(), O_TMPFILE | O_RDWR, mode);
    if (!m_file.IsOpen() && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
        NameTemporary([&](const char* path) {
            m_file = PosixFile::Open(path, O_RDWR | O_CREAT | O_EXCL, mode);
            return m_file.IsOpen();
        });
    }
    if (!m_file.IsOpen()) {
        Fail("the file can't be made");
    }
    ZU_WEP::LockTemporary(m_file);
}

/// Its owner can read it back until it takes its place, whatever its mode is then.
void OutputFile::KeepReadable() {
    struct stat status {};
    if (::fstat(m_file.Descriptor(), &status) == 0 && (status.st_mode & kPrivate) != kPrivate) {
        m_mode = status.st_mode & FileMetadata::kPermissionBits;
        ::fchmod(m_file.Descriptor(), *m_mode | kPrivate);
    }
}

void OutputFile::TellLosses(const std::vector<FileMetadata::Loss>& losses) {
    for (const FileMetadata::Loss& loss : losses) {
        m_notKept.push_back(fmt::format("the {} of the file that was there could not be kept: {}", loss.what,
                                        ZU_WEP::ErrnoText(loss.error)));
    }
}

bool OutputFile::NameTemporary(const std::function<bool(const char* path)>& make) {
    const InterruptBlock block;  // so that the name is not there without its guard
    return ZU_WEP::MakeTemporary(DirectoryOf(m_target), [&](const std::string& path) {
        m_temporary = path;  // before there is such a file: this may take memory that is not there
        m_guard.emplace(path);
        if (!make(path.c_str())) {
            const int error = errno;
            ForgetTemporary();
            errno = error;
            return false;
        }
        return true;
    });
}

void OutputFile::ForgetTemporary() {
    m_guard.reset();
    m_temporary.clear();
}

void OutputFile::Write(std::string_view bytes) {
    if (!m_file.WriteAt(m_written, {bytes})) {
        Fail("the file can't be written");
    }
    m_written += bytes.size();
}

void OutputFile::WriteZeros(std::uint64_t count) { m_written += count; }

void OutputFile::Flush() {
    if (!m_file.Truncate(m_written)) {
        Fail("the file can't be written");
    }
}

std::string OutputFile::ReadBackPath() const { return fmt::format("/proc/self/fd/{}", m_file.Descriptor()); }

void OutputFile::Commit() {
    Flush();
    if ((m_mode && ::fchmod(m_file.Descriptor(), *m_mode) != 0) || !m_file.Sync()) {
        Fail("the file can't be written");
    }
    if (!TakePlace()) {
        Fail(errno == EEXIST ? "a file of that name has appeared meanwhile; nothing was written"
                             : "the file can't be put in its place");
    }
    ForgetTemporary();
    const PosixFile directory = PosixFile::Open(DirectoryOf(m_target).c_str(), O_RDONLY | O_DIRECTORY);
    if ((directory.IsOpen() && !directory.Sync()) || !m_file.Close()) {
        Fail("the file can't be written");
    }
}

bool OutputFile::TakePlace() {
    const auto link = [&](const char* path) {
        return ::linkat(AT_FDCWD, ReadBackPath().c_str(), AT_FDCWD, path, AT_SYMLINK_FOLLOW) == 0;
    };
    if (m_temporary.empty() && !m_replaces) {
        return link(m_target.c_str());
    }
    if (m_temporary.empty() && !NameTemporary(link)) {
        return false;
    }
    if (m_replaces || ::renameat2(AT_FDCWD, m_temporary.c_str(), AT_FDCWD, m_target.c_str(), RENAME_NOREPLACE) == 0) {
        return !m_replaces || ::rename(m_temporary.c_str(), m_target.c_str()) == 0;
    }
    // A file system that can't tell: nothing was there when the command began.
    return errno == EINVAL && ::rename(m_temporary.c_str(), m_target.c_str()) == 0;
}

Failure OutputFile::Named(const Failure& failure) const {
    return failure.File() == ReadBackPath() ? Failure(m_path, failure.Cause()).At(failure.Offset()) : failure;
}

void OutputFile::Fail(const char* what) const {
    const int error = errno;
    throw Failure(m_path, fmt::format("{}: {}", what, ZU_WEP::ErrnoText(error)));
}

}  // namespace stmdcm
