#include "source_utilities/uEnvironment.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "source_utilities/source_utilities_error.h"
#include "source_utilities/uString.h"

namespace ZU_WEP {

namespace {

constexpr const char* nullNameText = "failed set an environment variable name to null";

const char* MakeTraceDirectory(std::string& dir, const char* subdirectory) {
    const char* home = uEnvironment::GetVar("HOME");
    if (*home == '\0') {
        throw source_utilities_error("failed to read environment variable \"HOME\"");
    }
    dir = home;
    uEnvironment::JoinPaths(dir, ".ZU-trace");
    if (subdirectory != nullptr) {
        uEnvironment::JoinPaths(dir, subdirectory);
    }
    uEnvironment::MakeDirectory(dir.c_str());
    return dir.c_str();
}

}  // namespace

const char* uEnvironment::GetVar(const char* name) {
    if (name == nullptr) {
        throw source_utilities_error(nullNameText);  // Hosts know this text from both.
    }
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

int uEnvironment::SetVar(const char* name, const char* value) {
    if (name == nullptr) {
        throw source_utilities_error(nullNameText);
    }
    if (value == nullptr) {
        throw source_utilities_error("failed set an environment variable value to null");
    }
    return setenv(name, value, 1);
}

const char* uEnvironment::GetWorkingDirectory(std::string& dir) {
    std::array<char, 4096> buffer{};
    if (getcwd(buffer.data(), buffer.size()) == nullptr) {
        throw source_utilities_error("failed to get current working directory");
    }
    dir = buffer.data();
    return dir.c_str();
}

int uEnvironment::SetWorkingDirectory(const char* path) { return path == nullptr ? -1 : chdir(path); }

int uEnvironment::MakeDirectory(const char* path) {
    struct stat info {};
    if (path == nullptr || ::stat(path, &info) == 0) {  // a manager asks for what is there a score of times
        return -1;
    }
    std::string rest = path;
    std::string prefix;
    std::string piece;
    int result = 0;
    while (uString::Split(rest.c_str(), piece, rest, "/") != 0) {
        prefix += piece + "/";
        result = mkdir(prefix.c_str(), 0777);
    }
    return result;
}

void uEnvironment::NormalizeDirSep(std::string& path) {
    uString::Replace(path, "\\", "/");
    while (path.find("//") != std::string::npos) {
        uString::Replace(path, "//", "/");
    }
}

void uEnvironment::GetParentDir(std::string& parent, const char* path) {
    const std::string whole(path);
    const std::size_t separator = whole.rfind('/');
    parent = separator == std::string::npos ? std::string() : whole.substr(0, separator);
}

void uEnvironment::JoinPaths(std::string& path, const char* tail) {
    if (!path.empty() && path.back() != '/') {
        path += '/';
    }
    path += tail;
    NormalizeDirSep(path);
}

void uEnvironment::GetCurrentExecutablePath(std::string& path) {
    std::array<char, 1023> buffer{};
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    path.assign(buffer.data(), length < 0 ? 0 : static_cast<std::size_t>(length));
}

const char* uEnvironment::GetTraceLoggingDirectory(std::string& dir) { return MakeTraceDirectory(dir, nullptr); }

const char* uEnvironment::GetTraceUserSettingsDirectory(std::string& dir) {
    return MakeTraceDirectory(dir, "settings");
}

const char* uEnvironment::GetTraceTemporaryDataDirectory(std::string& dir) { return MakeTraceDirectory(dir, "data"); }

uEnvironment::ScopedDirectoryChanger::ScopedDirectoryChanger(const char* path) { Change(path); }

uEnvironment::ScopedDirectoryChanger::~ScopedDirectoryChanger() { Restore(); }

void uEnvironment::ScopedDirectoryChanger::Change(const char* path) {
    if (path == nullptr) {
        return;
    }
    if (!m_savedDirectory.empty()) {
        throw source_utilities_error("can't temporarily change the working directory again until its restored");
    }
    GetWorkingDirectory(m_savedDirectory);
    if (SetWorkingDirectory(path) != 0) {
        throw source_utilities_error("failed to temporarily change the working directory to \"" + std::string(path) +
                                     "\"");
    }
}

void uEnvironment::ScopedDirectoryChanger::Restore() {
    if (m_savedDirectory.empty()) {
        return;
    }
    SetWorkingDirectory(m_savedDirectory.c_str());
    m_savedDirectory.clear();
}

}  // namespace ZU_WEP
