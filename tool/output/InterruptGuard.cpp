#include "tool/output/InterruptGuard.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <string_view>
#include <utility>

#include "stmdcm/capture/InterruptBlock.h"
#include "tool/output/StopRequest.h"

namespace stmdcm {

namespace {

constexpr int kDeepest = 32;
constexpr int kMostPasses = 100;

void Remove(int directory, const char* name, int depth);

/// One pass over what is in an open directory.
void RemoveEntries(int directory, int depth) {
    alignas(dirent64) std::array<char, 2048> buffer;
    ::lseek(directory, 0, SEEK_SET);
    for (ssize_t size = 0; (size = ::getdents64(directory, buffer.data(), buffer.size())) > 0;) {
        for (ssize_t place = 0; place < size;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + place);
            const std::string_view name = entry->d_name;
            if (name != "." && name != "..") {
                Remove(directory, entry->d_name, depth);
            }
            place += entry->d_reclen;
        }
    }
}

/// Async-signal-safe (signal-safety(7)), as all that it calls: std::filesystem is not.
void Remove(int directory, const char* name, int depth) {
    if (::unlinkat(directory, name, 0) == 0 || depth == 0) {
        return;
    }
    const int opened = ::openat(directory, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (opened == -1) {
        return;
    }
    // A file system may pass over entries while others are removed.
    for (int pass = 0; pass < kMostPasses; ++pass) {
        RemoveEntries(opened, depth - 1);
        if (::unlinkat(directory, name, AT_REMOVEDIR) == 0 || errno != ENOTEMPTY) {
            break;
        }
    }
    ::close(opened);
}

}  // namespace

InterruptGuard* InterruptGuard::s_last = nullptr;

InterruptGuard::InterruptGuard(std::string path) : m_path(std::move(path)), m_before(s_last) {
    TakeSignals();
    const InterruptBlock block;
    s_last = this;
}

InterruptGuard::~InterruptGuard() {
    const InterruptBlock block;
    InterruptGuard** link = &s_last;
    while (*link != this) {
        link = &(*link)->m_before;
    }
    *link = m_before;
}

void InterruptGuard::SetLastWords(LastWords words) {
    const InterruptBlock block;
    m_lastWords = std::move(words);
}

/// Async-signal-safe. To standard error; where that does not take it nobody can be told.
void InterruptGuard::SayLastWords() const {
    if (m_lastWords.number == nullptr) {
        return;
    }
    std::array<char, 20> digits;
    const auto number = std::to_chars(digits.data(), digits.data() + digits.size(), m_lastWords.number->load());
    const std::array<iovec, 3> pieces{{{const_cast<char*>(m_lastWords.before.data()), m_lastWords.before.size()},
                                       {digits.data(), static_cast<std::size_t>(number.ptr - digits.data())},
                                       {const_cast<char*>(m_lastWords.behind.data()), m_lastWords.behind.size()}}};
    [[maybe_unused]] const ssize_t written = ::writev(STDERR_FILENO, pieces.data(), pieces.size());
}

void InterruptGuard::TakeSignals() {
    struct sigaction taken {};
    taken.sa_handler = CleanUpAndEnd;
    taken.sa_mask = InterruptBlock::Signals();
    taken.sa_flags = SA_RESTART;  // where it only asks for an end
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        struct sigaction old {};
        const bool isIgnored = ::sigaction(number, nullptr, &old) == 0 && old.sa_handler == SIG_IGN;
        if (!isIgnored) {  // nohup, or a shell's background job
            ::sigaction(number, &taken, nullptr);
        }
    }
}

void InterruptGuard::CleanUpAndEnd(int number) {
    const int error = errno;
    if (StopRequest::Takes(number)) {
        errno = error;
        return;
    }
    for (const InterruptGuard* guard = s_last; guard != nullptr; guard = guard->m_before) {
        Remove(AT_FDCWD, guard->m_path.c_str(), kDeepest);
        if (number != SIGPIPE) {
            guard->SayLastWords();
        }
    }
    ::signal(number, SIG_DFL);
    sigset_t own;
    sigemptyset(&own);
    sigaddset(&own, number);
    pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
    ::raise(number);
}

}  // namespace stmdcm
