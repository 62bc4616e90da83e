#include "tool/output/InterruptGuard.h"

#include <pthread.h>

#include <utility>

namespace stmdcm {

namespace {

constexpr int kStop = SIGUSR2;  // Ends the waiting; sent from outside it is one more way to end the program.

bool IsIgnored(int number) {
    struct sigaction action {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

InterruptGuard::InterruptGuard(std::function<void()> cleanUp) : m_cleanUp(std::move(cleanUp)) {
    sigemptyset(&m_signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        if (!IsIgnored(number)) {  // nohup, or a shell's background job
            sigaddset(&m_signals, number);
        }
    }
    sigaddset(&m_signals, kStop);
    pthread_sigmask(SIG_BLOCK, &m_signals, &m_oldMask);
    m_waiter = std::thread([this] { Wait(); });
}

InterruptGuard::~InterruptGuard() {
    m_ended = true;
    pthread_kill(m_waiter.native_handle(), kStop);
    m_waiter.join();
    pthread_sigmask(SIG_SETMASK, &m_oldMask, nullptr);
}

void InterruptGuard::Wait() {
    int number = 0;
    sigwait(&m_signals, &number);
    if (m_ended) {
        return;
    }
    m_cleanUp();
    std::signal(number, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &m_signals, nullptr);
    raise(number);
}

}  // namespace stmdcm
