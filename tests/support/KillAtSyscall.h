#pragma once

// Runs work in a child process and watches its system calls, or stops it at a chosen one: what a kill or a full disk
// does.

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace stmdcm_test {

inline constexpr bool kIsSanitized = STMDCM_IS_SANITIZED;

struct ChildRun {
    bool reached = false;  ///< the n-th call was made
    int exitStatus = -1;   ///< what the work gave; -1 when the child was killed
};

using Work = std::function<int()>;

/// Runs the work in a child, which ends with the work's result as exit status, at once and unseen by leak checks.
inline pid_t StartChild(const Work& work, bool traced = false) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (traced) {
            ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            ::raise(SIGSTOP);
        }
        ::_exit(work());
    }
    return child;
}

inline int WaitForChild(pid_t child) {
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline int RunInChild(const Work& work) { return WaitForChild(StartChild(work)); }

/// Calls `atCall(pid, info)` whenever the work enters a system call. Gives what the work gave; -1 when it was killed.
inline int WatchSyscalls(const Work& work, const std::function<void(pid_t, const __ptrace_syscall_info&)>& atCall) {
    const pid_t child = StartChild(work, true);
    int status = 0;
    if (::waitpid(child, &status, 0) != child || !WIFSTOPPED(status) ||
        ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0) {
        throw std::runtime_error("cannot trace the child");
    }
    int signal = 0;
    while (::ptrace(PTRACE_SYSCALL, child, nullptr, signal) == 0 && ::waitpid(child, &status, 0) == child &&
           WIFSTOPPED(status)) {
        signal = WSTOPSIG(status) == (SIGTRAP | 0x80) ? 0 : WSTOPSIG(status);
        __ptrace_syscall_info info{};
        if (signal == 0 && ::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info) > 0 &&
            info.op == PTRACE_SYSCALL_INFO_ENTRY) {
            atCall(child, info);
        }
    }
    if (WIFSTOPPED(status)) {  // killed while it stood still
        ::waitpid(child, &status, 0);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Whether `text` stands at an address of the child: an argument of the call that it enters.
inline bool IsTextAt(pid_t child, std::uint64_t address, const std::string& text) {
    std::string found(text.size() + 1, '\0');
    const iovec to{found.data(), found.size()}, from{reinterpret_cast<void*>(address), found.size()};
    return ::process_vm_readv(child, &to, 1, &from, 1, 0) == static_cast<ssize_t>(found.size()) &&
           found.compare(0, found.npos, text.c_str(), found.size()) == 0;
}

inline constexpr int kGoOn = -1;

/// Stops the work at the n-th system call that it enters, counted from 1, of those listed (none: of all): lets it fail
/// with `error` instead of being done, or kills the work for 0, or lets it go on. `before` that.
inline ChildRun StopAtSyscall(
    unsigned n, int error, const std::vector<long>& calls, const Work& work,
    const std::function<void()>& before = [] {}) {
    unsigned count = 0;
    const int exitStatus = WatchSyscalls(work, [&](pid_t child, const __ptrace_syscall_info& info) {
        const bool isListed = calls.empty() || std::count(calls.begin(), calls.end(), long(info.entry.nr)) > 0;
        if (!isListed || ++count != n) {
            return;
        }
        before();
        if (error <= 0) {
            ::kill(child, error == 0 ? SIGKILL : 0);
            return;
        }
        ::ptrace(PTRACE_POKEUSER, child, offsetof(user, regs.orig_rax), -1L);
        ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        ::waitpid(child, nullptr, 0);
        ::ptrace(PTRACE_POKEUSER, child, offsetof(user, regs.rax), static_cast<long>(-error));
    });
    return {count >= n, exitStatus};
}

/// Stops the work in one place after the other until it comes to its end, each time between `prepare` and `check(run)`.
template <class Prepare, class Check>
void StopEverywhere(int error, const std::vector<long>& calls, const Work& work, unsigned step, Prepare prepare,
                    Check check) {
    bool reached = true;
    for (unsigned n = 1; reached && !testing::Test::HasFailure(); n += step) {
        SCOPED_TRACE(testing::Message() << "call " << n << " with error " << error);
        prepare();
        const ChildRun run = StopAtSyscall(n, error, calls, work);
        reached = run.reached;
        check(run);
    }
}

}  // namespace stmdcm_test
