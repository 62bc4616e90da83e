#include "tool/output/OutputDirectory.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <stdio.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "source_utilities/Temporaries.h"
#include "stmdcm/capture/InterruptBlock.h"
#include "stmdcm/capture/RemoveTree.h"
#include "stmdcm/reading/Words.h"
#include "tool/output/OutputFile.h"
#include "tool/output/Progress.h"

namespace stmdcm {

namespace fs = std::filesystem;
using ZU_WEP::PosixFile;

namespace {

constexpr mode_t kNewDirectory = 0777;

std::string WithoutLastSlash(std::string path) {
    path.erase(path.find_last_not_of('/') + 1);
    return path;
}

/// Tells how far a file is.
class ToldSink final : public ByteSink {
  public:
    ToldSink(ByteSink& to, const std::string& name, std::uint64_t size)
        : m_to(to), m_progress(fmt::format("Copying {}", Shown(name)), size, false) {}
    void Write(std::string_view bytes) override {
        m_to.Write(bytes);
        m_progress.Update(m_done += bytes.size());
    }
    void WriteZeros(std::uint64_t count) override {
        m_to.WriteZeros(count);
        m_progress.Update(m_done += count);
    }

  private:
    ByteSink& m_to;
    Progress m_progress;
    std::uint64_t m_done = 0;
};

}  // namespace

OutputDirectory::OutputDirectory(const std::string& path) : m_path(WithoutLastSlash(path)) {
    struct stat info {};
    if (m_path.empty() || ::lstat(m_path.c_str(), &info) == 0) {
        throw Failure(path, "something of that name is there already; name a new directory");
    }
    m_parent = fs::path(m_path).parent_path().string();
    m_parent = m_parent.empty() ? "." : m_parent;
    const InterruptBlock block;  // no interrupt comes between the directory and its guard
    Make();
    m_guard.emplace(m_temporary.string());
}

OutputDirectory::~OutputDirectory() {
    if (!m_temporary.empty()) {
        RemoveTree(m_temporary);
    }
}

void OutputDirectory::Make() {
    ZU_WEP::RemoveLeftovers(m_parent, RemoveTree);
    const bool isMade = ZU_WEP::MakeTemporary(m_parent, [&](const std::string& path) {
        m_temporary = path;
        return ::mkdir(path.c_str(), kNewDirectory) == 0;
    });
    if (!isMade) {
        m_temporary.clear();
        Fail("the directory can't be made");
    }
    m_lock = PosixFile::Open(m_temporary.c_str(), O_RDONLY | O_DIRECTORY);
    ZU_WEP::LockTemporary(m_lock);
}

void OutputDirectory::Add(const std::string& name, const std::string& input, const PosixFile* source,
                          const std::function<void(ByteSink&)>& write) {
    const fs::path target = m_temporary / name;
    const std::uint64_t size = source != nullptr ? source->Size().value_or(0) : 0;
    const std::string folder = target.parent_path().string();
    if (folder != m_temporary && m_folders.insert(folder).second && ::mkdir(folder.c_str(), kNewDirectory) != 0) {
        Fail("a directory in it can't be made");
    }
    try {
        OutputFile file(target.string(), false, {input}, source);
        ToldSink told(file, name, size);
        write(told);
        file.Commit();
    } catch (const Failure& failure) {
        throw Named(failure);
    }
}

void OutputDirectory::Commit() {
    Sync(m_temporary.string());
    for (const std::string& folder : m_folders) {
        Sync(folder);
    }
    const InterruptBlock block;
    bool isDone = ::renameat2(AT_FDCWD, m_temporary.c_str(), AT_FDCWD, m_path.c_str(), RENAME_NOREPLACE) == 0;
    struct stat info {};
    if (!isDone && errno == EINVAL && ::lstat(m_path.c_str(), &info) != 0) {  // a file system without that flag
        isDone = ::rename(m_temporary.c_str(), m_path.c_str()) == 0;
    }
    if (!isDone) {
        Fail("the directory can't get its name");
    }
    m_temporary.clear();
    m_guard.reset();
    Sync(m_parent);
}

void OutputDirectory::Sync(const std::string& directory) const {
    const PosixFile opened = PosixFile::Open(directory.c_str(), O_RDONLY | O_DIRECTORY);
    if (!opened.IsOpen() || !opened.Sync()) {
        Fail("the directory can't be stored");
    }
}

/// The same failure of a file in the directory as that will be called.
Failure OutputDirectory::Named(const Failure& failure) const {
    const std::string temporary = m_temporary.string();
    const bool isInside = failure.File().starts_with(temporary);
    return isInside ? failure.Renamed(m_path + failure.File().substr(temporary.size()), failure.Cause()) : failure;
}

void OutputDirectory::Fail(const char* what) const {
    const int error = errno;
    throw Failure(m_path, fmt::format("{}: {}", what, ZU_WEP::ErrnoText(error)));
}

}  // namespace stmdcm
