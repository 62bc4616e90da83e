// A library to preload: lets the n-th call of a program into the system fail, be cut short, or be its last; or records
// what the program changes on disk.

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <stdarg.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/faults/FaultPlan.h"
#include "tests/faults/ShimRecorder.h"

namespace {

using stmdcm_test::Report;
using stmdcm_test::ShimRecorder;

enum class Mode { Off, Count, Fail, Kill, Short, Cut, Alloc, Record };

/// What a call does: which errors it can meet follows from it.
enum CallKind : unsigned {
    kOpens = 1,
    kReads = 2,
    kWrites = 4,
    kNames = 8,
    kLocks = 16,
    kLooks = 32,
    kCloses = 64,
    kTransfers = 128,  ///< may do less than it is asked for
    kLists = 256,      ///< walks folders
    kCleansUp = 0      ///< meets no error
};

struct Plan {
    Mode mode = Mode::Off;
    std::uint64_t n = 0;
    int error = EIO;
    bool onwards = false;
    Report* report = nullptr;
};
Plan g_plan;
ShimRecorder g_recorder;
bool g_isStarted = false;
thread_local bool t_inside = false;

unsigned KindsThatMeet(int error) {
    switch (error) {
        case ENOSPC:
            return kWrites | kNames;
        case EMFILE:
            return kOpens | kLists;
        case EACCES:
            return kOpens | kLists | kNames;
        case ENOLCK:
            return kLocks;
        case EINTR:
            return kOpens | kReads | kWrites | kLocks;
        default:
            return ~0U;
    }
}

__attribute__((constructor)) void ReadPlan() {
    const char* plan = std::getenv(stmdcm_test::kPlanVariable);
    const char* reportFile = std::getenv(stmdcm_test::kReportVariable);
    char mode[16]{}, when[16]{};
    if (plan == nullptr || reportFile == nullptr ||
        std::sscanf(plan, "%15s %lu %d %15s", mode, &g_plan.n, &g_plan.error, when) != 4) {
        return;
    }
    const long file = ::syscall(SYS_openat, AT_FDCWD, reportFile, O_RDWR | O_CLOEXEC, 0);
    void* memory = ::mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED, static_cast<int>(file), 0);
    ::syscall(SYS_close, file);
    if (memory == MAP_FAILED) {
        return;
    }
    g_plan.report = static_cast<Report*>(memory);
    g_plan.onwards = std::strcmp(when, "onwards") == 0;
    const char* const kModes[] = {"off", "count", "fail", "kill", "short", "cut", "alloc", "record"};
    for (int i = 0; i < 8; ++i) {
        if (std::strcmp(mode, kModes[i]) == 0) {
            g_plan.mode = static_cast<Mode>(i);
        }
    }
    if (g_plan.mode == Mode::Record) {
        g_recorder.Start(reportFile);
    }
}

void Note(const char* call, const char* path, int descriptor) {
    Report& report = *g_plan.report;
    if (report.hits++ > 0) {
        return;
    }
    std::strncpy(report.call, call, sizeof report.call - 1);
    if (path != nullptr) {
        std::strncpy(report.path, path, sizeof report.path - 1);
    } else if (descriptor >= 0) {
        char link[64];
        std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
        ::syscall(SYS_readlink, link, report.path, sizeof report.path - 1);
    }
}

/// Cuts the file that is being read to its half, if it is one of the folder that the program works in.
void CutFile(int descriptor) {
    char folder[PATH_MAX]{}, link[64], path[PATH_MAX]{};
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    ::syscall(SYS_getcwd, folder, sizeof folder);
    ::syscall(SYS_readlink, link, path, sizeof path - 1);
    const size_t length = std::strlen(folder);
    struct stat info {};
    if (std::strncmp(path, folder, length) == 0 && path[length] == '/' && ::syscall(SYS_stat, path, &info) == 0) {
        ::syscall(SYS_truncate, path, info.st_size / 2);
    }
}

bool IsNext() {
    const std::uint64_t number = ++g_plan.report->calls;
    const std::uint64_t step = g_plan.error == EINTR ? 2 : 1;  // a call is not interrupted for ever
    return number == g_plan.n || (g_plan.onwards && number > g_plan.n && (number - g_plan.n) % step == 0);
}

/// Whether this call is to fail, with errno set.
bool Fails(const char* call, unsigned kind, const char* path, int descriptor) {
    if (g_plan.mode == Mode::Off || g_plan.mode == Mode::Alloc || g_plan.mode == Mode::Record ||
        (descriptor >= 0 && descriptor <= 2) || t_inside ||
        (g_plan.mode == Mode::Short ? (kind & kTransfers) == 0
         : g_plan.mode == Mode::Cut ? (kind & kReads) == 0
                                    : (kind & KindsThatMeet(g_plan.error)) == 0)) {
        return false;
    }
    if (!IsNext() || g_plan.mode == Mode::Count) {
        return false;
    }
    const int error = errno;
    Note(call, path, descriptor);
    errno = error;
    if (g_plan.mode == Mode::Cut) {
        CutFile(descriptor);
        errno = error;
        return false;
    }
    if (g_plan.mode == Mode::Kill) {
        ::syscall(SYS_kill, ::getpid(), SIGKILL);
    }
    if (g_plan.mode == Mode::Fail) {
        errno = g_plan.error;
    }
    return true;
}

bool IsShort() { return g_plan.mode == Mode::Short; }

template <class Function>
Function Next(const char* name) {
    t_inside = true;
    auto* next = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
    t_inside = false;
    return next;
}

size_t Cut(size_t size) { return size > 1 ? size / 2 : size; }

}  // namespace

#define REAL(name) static auto* const real = Next<decltype(&name)>(#name)

// A call that fails as a whole.
#define WRAP(result, failure, kind, name, parameters, arguments, path, descriptor) \
    extern "C" result name parameters {                                            \
        REAL(name);                                                                \
        return Fails(#name, (kind), path, descriptor) ? failure : real arguments;  \
    }

// A call that changes what is on disk: `record` then notes that.
#define WRAP_RECORDED(kind, name, parameters, arguments, path, descriptor, record)     \
    extern "C" int name parameters {                                                   \
        REAL(name);                                                                    \
        const int done = Fails(#name, (kind), path, descriptor) ? -1 : real arguments; \
        if (done == 0) {                                                               \
            g_recorder.record;                                                         \
        }                                                                              \
        return done;                                                                   \
    }

// A transfer: it may be cut short as well.
#define WRAP_TRANSFER(kind, name, parameters, whole, half)    \
    extern "C" ssize_t name parameters {                      \
        REAL(name);                                           \
        if (Fails(#name, (kind) | kTransfers, nullptr, fd)) { \
            return IsShort() ? real half : -1;                \
        }                                                     \
        return real whole;                                    \
    }

#define WRAP_OPEN(opens, name, parameters, withMode)                                                 \
    extern "C" int name parameters {                                                                 \
        REAL(name);                                                                                  \
        va_list list;                                                                                \
        va_start(list, flags);                                                                       \
        const mode_t mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(list, mode_t) : 0;       \
        va_end(list);                                                                                \
        const unsigned kind = opens | ((flags & O_CREAT) != 0 ? static_cast<unsigned>(kNames) : 0U); \
        if (Fails(#name, kind, path, -1)) {                                                          \
            return -1;                                                                               \
        }                                                                                            \
        const bool isNew = ShimRecorder::IsNew(path, flags);                                         \
        const int fd = real withMode;                                                                \
        g_recorder.Opened(fd, path, flags, isNew);                                                   \
        return fd;                                                                                   \
    }

WRAP_OPEN(kOpens, open, (const char* path, int flags, ...), (path, flags, mode))
WRAP_OPEN(kOpens, open64, (const char* path, int flags, ...), (path, flags, mode))
WRAP_OPEN(kLists, openat, (int at, const char* path, int flags, ...), (at, path, flags, mode))
WRAP_OPEN(kLists, openat64, (int at, const char* path, int flags, ...), (at, path, flags, mode))
WRAP(FILE*, nullptr, kOpens, fopen, (const char* path, const char* mode), (path, mode), path, -1)
WRAP(FILE*, nullptr, kOpens, fopen64, (const char* path, const char* mode), (path, mode), path, -1)
WRAP(DIR*, nullptr, kLists, opendir, (const char* path), (path), path, -1)
WRAP(char*, nullptr, kNames, mkdtemp, (char* path), (path), path, -1)
WRAP(int, -1, kNames, mkdir, (const char* path, mode_t mode), (path, mode), path, -1)
WRAP_RECORDED(kNames, rename, (const char* path, const char* to), (path, to), path, -1, Named(to, path))
WRAP_RECORDED(kNames, renameat2, (int at, const char* path, int toAt, const char* to, unsigned flags),
              (at, path, toAt, to, flags), path, -1, Named(to, path))
WRAP_RECORDED(kNames, linkat, (int at, const char* path, int toAt, const char* to, int flags),
              (at, path, toAt, to, flags), to, -1, Named(to, ""))
WRAP_RECORDED(kCleansUp, unlink, (const char* path), (path), path, -1, Named("", path))
WRAP(int, -1, kLooks, stat, (const char* path, struct stat* info), (path, info), path, -1)
WRAP(int, -1, kLooks, lstat, (const char* path, struct stat* info), (path, info), path, -1)
WRAP(int, -1, kLooks, fstat, (int fd, struct stat* info), (fd, info), nullptr, fd)
WRAP(int, -1, kLocks, flock, (int fd, int operation), (fd, operation), nullptr, fd)
WRAP_RECORDED(kWrites, fsync, (int fd), (fd), nullptr, fd, Synced(fd))
WRAP_RECORDED(kWrites, fdatasync, (int fd), (fd), nullptr, fd, Synced(fd))
WRAP_RECORDED(kWrites, ftruncate, (int fd, off_t size), (fd, size), nullptr, fd, Truncated(fd, size))
WRAP_RECORDED(kWrites, ftruncate64, (int fd, off64_t size), (fd, size), nullptr, fd, Truncated(fd, size))
WRAP(int, -1, kWrites, fallocate, (int fd, int mode, off_t at, off_t size), (fd, mode, at, size), nullptr, fd)
WRAP(int, -1, kLooks, fchmod, (int fd, mode_t mode), (fd, mode), nullptr, fd)
WRAP(int, -1, kLooks, fchown, (int fd, uid_t user, gid_t group), (fd, user, group), nullptr, fd)
WRAP(ssize_t, -1, kLooks, flistxattr, (int fd, char* list, size_t size), (fd, list, size), nullptr, fd)
WRAP(ssize_t, -1, kLooks, fgetxattr, (int fd, const char* name, void* value, size_t size), (fd, name, value, size),
     nullptr, fd)
WRAP(int, -1, kLooks, fsetxattr, (int fd, const char* name, const void* value, size_t size, int flags),
     (fd, name, value, size, flags), nullptr, fd)
WRAP(int, -1, kLooks, fremovexattr, (int fd, const char* name), (fd, name), nullptr, fd)
WRAP_TRANSFER(kReads, read, (int fd, void* to, size_t size), (fd, to, size), (fd, to, Cut(size)))
WRAP_TRANSFER(kReads, pread, (int fd, void* to, size_t size, off_t at), (fd, to, size, at), (fd, to, Cut(size), at))
WRAP_TRANSFER(kReads, pread64, (int fd, void* to, size_t size, off64_t at), (fd, to, size, at), (fd, to, Cut(size), at))

namespace {

/// A write of several pieces, at a place or, where that is nowhere, where the descriptor stands.
template <class Write>
ssize_t Gathered(const char* call, int fd, const iovec* from, int count, off_t at, Write write) {
    const iovec half{from->iov_base, Cut(from->iov_len)};
    const bool fails = Fails(call, kWrites | kTransfers, nullptr, fd);
    if (fails && !IsShort()) {
        return -1;
    }
    const ssize_t done = fails ? write(&half, 1) : write(from, count);
    g_recorder.Wrote(fd, at, from, done);
    return done;
}

}  // namespace

extern "C" ssize_t write(int fd, const void* from, size_t size) {
    REAL(write);
    const iovec all{const_cast<void*>(from), size};
    return Gathered("write", fd, &all, 1, ShimRecorder::kHere,
                    [&](const iovec* part, int) { return real(fd, from, part->iov_len); });
}

extern "C" ssize_t writev(int fd, const iovec* from, int count) {
    REAL(writev);
    return Gathered("writev", fd, from, count, ShimRecorder::kHere,
                    [&](const iovec* part, int n) { return real(fd, part, n); });
}

extern "C" ssize_t pwritev(int fd, const iovec* from, int count, off_t at) {
    REAL(pwritev);
    return Gathered("pwritev", fd, from, count, at, [&](const iovec* part, int n) { return real(fd, part, n, at); });
}

extern "C" ssize_t pwritev64(int fd, const iovec* from, int count, off64_t at) {
    REAL(pwritev64);
    return Gathered("pwritev64", fd, from, count, at, [&](const iovec* part, int n) { return real(fd, part, n, at); });
}

/// The first call of a program's own: what the loader allocates before it is not the program's to tell of.
extern "C" int fcntl(int fd, int command, ...) {
    REAL(fcntl);
    va_list list;
    va_start(list, command);
    void* argument = va_arg(list, void*);
    va_end(list);
    g_isStarted = g_isStarted || command == F_GETFD;
    return real(fd, command, argument);
}

/// The descriptor is gone, whatever it says.
extern "C" int close(int fd) {
    REAL(close);
    const bool fails = Fails("close", kCloses, nullptr, fd);
    const int error = errno;
    const int result = real(fd);
    if (fails && !IsShort()) {
        errno = error;
        return -1;
    }
    return result;
}

#ifndef STMDCM_SHIM_WITHOUT_MEMORY
// Memory: glibc's own allocator under its other names, so that nothing has to be looked up first.
extern "C" void* __libc_malloc(size_t);
extern "C" void* __libc_calloc(size_t, size_t);
extern "C" void* __libc_realloc(void*, size_t);

namespace {

bool RunsOut() {
    if (g_plan.mode != Mode::Alloc || t_inside || !g_isStarted || !IsNext()) {
        return false;
    }
    if (g_plan.report->hits++ == 0) {
        std::strcpy(g_plan.report->call, "malloc");
    }
    errno = ENOMEM;
    return true;
}

}  // namespace

extern "C" void* malloc(size_t size) { return RunsOut() ? nullptr : __libc_malloc(size); }
extern "C" void* calloc(size_t count, size_t size) { return RunsOut() ? nullptr : __libc_calloc(count, size); }
extern "C" void* realloc(void* old, size_t size) { return RunsOut() ? nullptr : __libc_realloc(old, size); }
#endif
