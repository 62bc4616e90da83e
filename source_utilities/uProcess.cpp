#include "source_utilities/uProcess.h"

#include <dirent.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

namespace ZU_WEP {

namespace {

std::optional<unsigned long> PidOf(std::string_view name) {
    unsigned long pid = 0;
    const char* end = name.data() + name.size();
    const auto [stop, failure] = std::from_chars(name.data(), end, pid);
    if (failure != std::errc() || stop != end) {
        return std::nullopt;
    }
    return pid;
}

/// The id of the first process that `wanted(pid)` accepts, else 0. Throws nothing: no host ends for want of memory.
template <typename Wanted>
unsigned long FindProcess(Wanted wanted) {
    const auto close = [](DIR* directory) { ::closedir(directory); };
    const std::unique_ptr<DIR, decltype(close)> directory(::opendir("/proc/"), close);
    while (const dirent* entry = directory != nullptr ? ::readdir(directory.get()) : nullptr) {
        const std::optional<unsigned long> pid = PidOf(entry->d_name);
        if (pid && wanted(*pid)) {
            return *pid;
        }
    }
    return 0;
}

bool RunsFile(unsigned long pid, const char* name) {
    char link[64];
    std::snprintf(link, sizeof link, "/proc/%lu/exe", pid);
    char executable[PATH_MAX + 1];
    const ssize_t length = ::readlink(link, executable, sizeof executable - 1);
    executable[length < 0 ? 0 : length] = '\0';
    return length >= 0 && std::strstr(executable, name) != nullptr;
}

}  // namespace

unsigned long uProcess::GetPid() { return static_cast<unsigned long>(getpid()); }

unsigned long uProcess::InvokeProcess(const char* program, const char* argument, bool /*wait*/) {
    if (program == nullptr) {
        return 0;
    }
    const pid_t child = fork();
    if (child < 0) {
        return 0;
    }
    if (child > 0) {
        return static_cast<unsigned long>(child);
    }
    execlp(program, program, argument, static_cast<char*>(nullptr));
    return 0;  // In the child, which is the caller's to end (uProcess.h).
}

bool uProcess::TerminateProcess(unsigned long pid) {
    if (pid == 0 || pid > static_cast<unsigned long>(std::numeric_limits<pid_t>::max())) {
        return false;
    }
    const pid_t child = static_cast<pid_t>(pid);
    if (kill(child, SIGTERM) != 0) {
        return false;
    }
    pid_t ended = 0;
    do {
        ended = waitpid(child, nullptr, 0);
    } while (ended < 0 && errno == EINTR);
    return ended == child;
}

unsigned long uProcess::LookupProcess(unsigned long pid) {
    return FindProcess([pid](unsigned long found) { return found == pid; });
}

unsigned long uProcess::LookupProcess(const char* name, unsigned long /*unused*/) {
    return name == nullptr ? 0 : FindProcess([name](unsigned long pid) { return RunsFile(pid, name); });
}

}  // namespace ZU_WEP
