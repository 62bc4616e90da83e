#include "stmdcm/capture/InterruptBlock.h"

#include <cerrno>

namespace stmdcm {

InterruptBlock::InterruptBlock() {
    const sigset_t signals = Signals();
    pthread_sigmask(SIG_BLOCK, &signals, &m_maskBefore);
}

InterruptBlock::~InterruptBlock() {
    const int error = errno;
    pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
    errno = error;
}

sigset_t InterruptBlock::Signals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        sigaddset(&signals, number);
    }
    return signals;
}

}  // namespace stmdcm
