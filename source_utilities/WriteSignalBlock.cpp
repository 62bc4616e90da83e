#include "source_utilities/WriteSignalBlock.h"

#include <cerrno>
#include <ctime>

namespace ZU_WEP {

namespace {

constexpr int kWriteSignals[] = {SIGXFSZ, SIGPIPE};

}  // namespace

WriteSignalBlock::WriteSignalBlock() {
    const int error = errno;
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : kWriteSignals) {
        sigaddset(&blocked, signal);
    }
    pthread_sigmask(SIG_BLOCK, &blocked, &m_maskBefore);
    sigset_t pending;
    sigpending(&pending);
    sigemptyset(&m_own);
    for (const int signal : kWriteSignals) {
        if (sigismember(&pending, signal) == 0) {
            sigaddset(&m_own, signal);
        }
    }
    errno = error;
}

WriteSignalBlock::~WriteSignalBlock() {
    const int error = errno;
    const timespec noWait{};
    while (sigtimedwait(&m_own, nullptr, &noWait) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
    errno = error;
}

}  // namespace ZU_WEP
