#include "tool/output/StopRequest.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

/// timeout(1) sends a signal to the process and to its group: that is one request.
constexpr double kSecondsOfOne = 0.2;

timespec Now() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return time;
}

double SecondsBetween(const timespec& begin, const timespec& end) {
    return static_cast<double>(end.tv_sec - begin.tv_sec) + 1e-9 * static_cast<double>(end.tv_nsec - begin.tv_nsec);
}

}  // namespace

StopRequest* StopRequest::s_current = nullptr;

StopRequest::StopRequest() : m_descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (m_descriptor < 0) {
        const int error = errno;
        throw Failure(fmt::format("no end could be asked for: {}", ZU_WEP::ErrnoText(error)));
    }
    s_current = this;
}

StopRequest::~StopRequest() {
    s_current = nullptr;
    ::close(m_descriptor);
}

bool StopRequest::IsMade() const {
    pollfd place{m_descriptor, POLLIN, 0};
    return m_number != 0 || (!m_isForAll && ::poll(&place, 1, 0) > 0);
}

void StopRequest::Obey() const {
    s_current = nullptr;
    ::raise(m_number);
}

void StopRequest::KeepToItself() {
    if (s_current != nullptr) {
        s_current->m_isForAll = false;
    }
}

bool StopRequest::Takes(int number) { return s_current != nullptr && s_current->TakesAsRequest(number); }

bool StopRequest::TakesAsRequest(int number) {
    if (number == SIGPIPE) {
        return false;
    }
    if (m_number != 0) {
        return SecondsBetween(m_time, Now()) < kSecondsOfOne;
    }
    m_time = Now();
    m_number = number;
    if (m_isForAll) {
        ::eventfd_write(m_descriptor, 1);
    }
    return true;
}

}  // namespace stmdcm
