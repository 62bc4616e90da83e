#include "source_utilities/uProcess.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <system_error>

namespace ZU_WEP {

namespace {

std::optional<unsigned long> PidOf(const std::string& name) {
    unsigned long pid = 0;
    const char* end = name.data() + name.size();
    const auto [stop, failure] = std::from_chars(name.data(), end, pid);
    if (failure != std::errc() || stop != end) {
        return std::nullopt;
    }
    return pid;
}

/// The id of the first process that `wanted(pid, directory)` accepts, else 0.
template <typename Wanted>
unsigned long FindProcess(Wanted wanted) {
    std::error_code failure;
    std::filesystem::directory_iterator entry("/proc/", failure);
    while (!failure && entry != std::filesystem::directory_iterator()) {
        const std::optional<unsigned long> pid = PidOf(entry->path().filename());
        if (pid && wanted(*pid, entry->path())) {
            return *pid;
        }
        entry.increment(failure);
    }
    return 0;
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
    return FindProcess([pid](unsigned long found, const std::filesystem::path&) { return found == pid; });
}

unsigned long uProcess::LookupProcess(const char* name, unsigned long /*unused*/) {
    if (name == nullptr) {
        return 0;
    }
    return FindProcess([name](unsigned long, const std::filesystem::path& directory) {
        std::error_code failure;
        const std::string executable = std::filesystem::read_symlink(directory / "exe", failure);
        return !failure && executable.find(name) != std::string::npos;
    });
}

}  // namespace ZU_WEP
