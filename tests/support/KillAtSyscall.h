#pragma once

// Runs work in a child process and stops it at a chosen system call: what a power cut, a kill or a full disk does.

#include <sys/ptrace.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <stdexcept>
#include <vector>

namespace stmdcm_test {

struct ChildRun {
    bool reached = false;  ///< the n-th call was made
    int exitStatus = -1;   ///< what the work gave; -1 when the child was killed
};

using Work = std::function<int()>;

/// Runs the work in a child, which ends at once with the work's result as exit status (255 for an exception).
inline pid_t StartChild(const Work& work, bool traced = false) {
    const pid_t child = ::fork();
    if (child != 0) {
        return child;
    }
    int status = 255;
    try {
        if (traced) {
            ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            ::raise(SIGSTOP);
        }
        status = work();
    } catch (const std::exception&) {
    }
    ::_exit(status);
}

inline int ExitStatus(int waitStatus) { return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : -1; }

inline int RunInChild(const Work& work) {
    int status = 0;
    ::waitpid(StartChild(work), &status, 0);
    return ExitStatus(status);
}

/// Calls `atEntry(pid, number)` whenever the child enters a system call, until the child ends; gives its wait status.
template <typename AtEntry>
int Trace(pid_t child, AtEntry atEntry) {
    int status = 0;
    if (::waitpid(child, &status, 0) != child || !WIFSTOPPED(status) ||
        ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0) {
        throw std::runtime_error("cannot trace the child");
    }
    int signal = 0;
    while (true) {
        ::ptrace(PTRACE_SYSCALL, child, nullptr, signal);
        if (::waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) {
            return status;
        }
        signal = WSTOPSIG(status) == (SIGTRAP | 0x80) ? 0 : WSTOPSIG(status);
        __ptrace_syscall_info info{};
        if (signal == 0 && ::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info) > 0 &&
            info.op == PTRACE_SYSCALL_INFO_ENTRY) {
            atEntry(child, static_cast<long>(info.entry.nr));
        }
    }
}

/// Kills the work when it enters its n-th system call, counted from 1.
inline ChildRun KillAtSyscall(unsigned n, const Work& work) {
    unsigned count = 0;
    const int status = Trace(StartChild(work, true), [&](pid_t child, long) {
        if (++count == n) {
            ::kill(child, SIGKILL);
        }
    });
    return {count >= n, ExitStatus(status)};
}

/// Lets the n-th of the given system calls (SYS_...) fail with `error` instead of being done.
inline ChildRun FailAtSyscall(unsigned n, int error, const std::vector<long>& calls, const Work& work) {
    const auto poke = [](pid_t child, std::size_t offset, long value) {
        ::ptrace(PTRACE_POKEUSER, child, offsetof(user, regs) + offset, value);
    };
    unsigned count = 0;
    const int status = Trace(StartChild(work, true), [&](pid_t child, long call) {
        if (std::find(calls.begin(), calls.end(), call) == calls.end() || ++count != n) {
            return;
        }
        poke(child, offsetof(user_regs_struct, orig_rax), -1);
        int stopped = 0;
        ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        ::waitpid(child, &stopped, 0);
        poke(child, offsetof(user_regs_struct, rax), -error);
    });
    return {count >= n, ExitStatus(status)};
}

}  // namespace stmdcm_test
