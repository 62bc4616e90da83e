#include "source_utilities/FileLock.h"

#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace ZU_WEP {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kFirstPause{1};
constexpr std::chrono::milliseconds kLongestPause{20};

bool Lock(int descriptor, int operation, const std::function<void()>& onInterrupt = nullptr) {
    int result = 0;
    while ((result = ::flock(descriptor, operation)) == -1 && errno == EINTR) {
        if (onInterrupt) {
            onInterrupt();
        }
    }
    return result == 0;
}

}  // namespace

FileLock::FileLock(const PosixFile& file, const std::function<void()>& onInterrupt)
    : m_descriptor(file.Descriptor()), m_isHeld(Lock(m_descriptor, LOCK_EX, onInterrupt)) {}

FileLock::FileLock(const PosixFile& file, LockPatience& patience) : m_descriptor(file.Descriptor()) {
    const Clock::time_point end = Clock::now() + patience.left;
    std::chrono::nanoseconds pause = kFirstPause;
    while (!(m_isHeld = Lock(m_descriptor, LOCK_EX | LOCK_NB)) && errno == EWOULDBLOCK) {
        patience.left = end - Clock::now();
        if (patience.left <= patience.left.zero()) {
            patience.hasRunOut = true;
            break;
        }
        std::this_thread::sleep_for(std::min(pause, patience.left));
        pause = std::min<std::chrono::nanoseconds>(2 * pause, kLongestPause);
    }
    patience.left = std::max(end - Clock::now(), patience.left.zero());
}

FileLock::~FileLock() {
    if (m_isHeld) {
        ::flock(m_descriptor, LOCK_UN);
    }
}

}  // namespace ZU_WEP
