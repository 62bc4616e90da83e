#include "tool/output/LateOutput.h"

#include <csignal>
#include <system_error>
#include <utility>

namespace stmdcm {

LateOutput::~LateOutput() {
    if (m_thread.joinable()) {
        {
            const std::lock_guard lock(m_mutex);
            m_isEnd = true;
        }
        m_change.notify_one();
        m_thread.join();
    }
    try {
        HandOn();
    } catch (...) {  // whoever ends before flushing tells another failure
    }
}

void LateOutput::Add(std::string_view text, When when) {
    const std::lock_guard lock(m_mutex);
    m_text += text;
    ++m_added;
    if (when == When::Now || m_text.size() > kMost || m_failure) {
        HandOn();
    } else if (!m_thread.joinable()) {
        Start();
    } else if (m_text.size() == text.size()) {
        m_change.notify_one();
    }
}

void LateOutput::Flush() {
    const std::lock_guard lock(m_mutex);
    HandOn();
}

void LateOutput::HandOn() {
    if (m_failure) {
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    }
    if (!m_text.empty()) {
        const std::string text = std::exchange(m_text, {});
        m_sink(text);
    }
    m_handedOn = m_added;
}

/// Where there is no further thread everything is handed on at once.
void LateOutput::Start() {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        m_thread = std::thread([this] { HandOnInTime(); });
    } catch (const std::system_error&) {
        HandOn();
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void LateOutput::PassSignalOn() const {
    sigset_t pending;
    if (::sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1) {
        ::pthread_kill(m_owner, SIGPIPE);
    }
}

void LateOutput::HandOnInTime() {
    std::unique_lock lock(m_mutex);
    while (!m_isEnd) {
        m_change.wait(lock, [&] { return m_isEnd || (!m_text.empty() && !m_failure); });
        m_change.wait_for(lock, kLatest, [&] { return m_isEnd; });
        if (!m_isEnd && !m_failure) {
            try {
                HandOn();
            } catch (...) {
                m_failure = std::current_exception();
                PassSignalOn();
            }
        }
    }
}

}  // namespace stmdcm
