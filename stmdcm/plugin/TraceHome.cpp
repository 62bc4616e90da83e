#include "stmdcm/plugin/TraceHome.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "source_utilities/Temporaries.h"
#include "stmdcm/Failure.h"
#include "stmdcm/capture/RemoveTree.h"
#include "trace/dcm/EnvironmentVariables.h"

namespace stmdcm {

namespace fs = std::filesystem;

namespace {

fs::path MakeTemporary(ZU_WEP::PosixFile& lock) {
    std::error_code error;
    fs::path directory = fs::temp_directory_path(error);
    directory = error ? directory : fs::canonical(directory, error);
    if (error) {
        const char* variable = ::getenv("TMPDIR");
        throw Failure(variable == nullptr ? "/tmp" : variable,
                      fmt::format("this is no directory for temporary files: {}; set TMPDIR to one that is there",
                                  ZU_WEP::ErrnoText(error.value())));
    }
    ZU_WEP::RemoveLeftovers(directory, RemoveTree);
    std::string made;
    const bool isMade = ZU_WEP::MakeTemporary(directory, [&](const std::string& path) {
        made = path;
        return ::mkdir(path.c_str(), S_IRWXU) == 0;
    });
    if (!isMade) {
        const int reason = errno;
        throw Failure(directory.string(),
                      fmt::format("no temporary directory can be made in it: {}", ZU_WEP::ErrnoText(reason)));
    }
    lock = ZU_WEP::PosixFile::Open(made.c_str(), O_RDONLY | O_DIRECTORY);
    ZU_WEP::LockTemporary(lock);
    try {
        return fs::path(made.c_str());  // which leaves the name for below
    } catch (...) {
        ::rmdir(made.c_str());
        throw;
    }
}

fs::path MakeKept(const fs::path& directory) {
    std::error_code error;
    fs::create_directories(directory, error);
    if (!fs::is_directory(directory)) {
        throw Failure(directory.string(),
                      fmt::format("the directory can't be made: {}",
                                  error ? ZU_WEP::ErrnoText(error.value()) : "there is a file of that name"));
    }
    if (!fs::is_empty(directory)) {
        throw Failure(directory.string(), "the directory is not empty; name a new one");
    }
    return fs::canonical(directory);
}

void MakeHome(const fs::path& path) {
    using namespace Zu::Wep::Trace;
    for (const char* variable : {kDebugClientVariable, kLoggingVariable, kLoggingDirectoryVariable,
                                 kDataDirectoryVariable, kSettingsDirectoryVariable}) {
        ::unsetenv(variable);
    }
    if (::setenv("HOME", path.c_str(), 1) != 0) {
        throw Failure(fmt::format("HOME can't be set: {}", ZU_WEP::ErrnoText(errno)));
    }
}

}  // namespace

TraceHome::TraceHome(const fs::path& keep)
    : m_path(keep.empty() ? MakeTemporary(m_lock) : MakeKept(keep)), m_isKept(!keep.empty()) {
    try {
        MakeHome(m_path);
    } catch (...) {
        Remove();
        throw;
    }
}

Failure TraceHome::Named(const Failure& failure) const {
    if (m_isKept) {
        return failure;
    }
    const std::string start = m_path.string() + "/";
    std::string cause = failure.Cause();
    for (std::size_t at = 0; (at = cause.find(start)) != std::string::npos;) {
        cause.erase(at, start.size());
    }
    if (!failure.File().starts_with(m_path.string())) {
        return failure.Renamed(failure.File(), cause);
    }
    return failure.Renamed(m_path.parent_path().string(), "a temporary file in it can't be used: " + cause);
}

void TraceHome::Remove() const {
    if (!m_isKept) {
        RemoveTree(m_path);
    }
}

}  // namespace stmdcm
