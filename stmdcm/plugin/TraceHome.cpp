#include "stmdcm/plugin/TraceHome.h"

#include <fmt/format.h>
#include <stdlib.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"
#include "trace/dcm/EnvironmentVariables.h"

namespace stmdcm {

namespace fs = std::filesystem;

namespace {

fs::path MakeTemporary() {
    std::error_code error;
    const fs::path directory = fs::temp_directory_path(error);
    if (error) {
        const char* variable = ::getenv("TMPDIR");
        throw Failure(variable == nullptr ? "/tmp" : variable,
                      "this is no directory for temporary files; set TMPDIR to one that is there");
    }
    std::string path = (directory / "stmdcm-XXXXXX").string();
    if (::mkdtemp(path.data()) == nullptr) {
        throw Failure(path, fmt::format("a temporary directory can't be made: {}", ZU_WEP::ErrnoText(errno)));
    }
    return fs::canonical(path);
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
    : m_path(keep.empty() ? MakeTemporary() : MakeKept(keep)), m_isKept(!keep.empty()) {
    try {
        MakeHome(m_path);
    } catch (...) {
        Remove();
        throw;
    }
}

void TraceHome::Remove() const {
    if (!m_isKept) {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
}

}  // namespace stmdcm
