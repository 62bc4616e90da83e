#pragma once

#include <atomic>
#include <ctime>

namespace stmdcm {

/// While it lives, the first SIGINT, SIGTERM or SIGHUP that an InterruptGuard would obey only asks for an end, so that
/// what is begun can be done and told; a later one is obeyed. One at a time, for the program's only thread. Processes
/// that are forked off hear of it, too.
class StopRequest {
  public:
    /// Throws Failure.
    StopRequest();
    ~StopRequest();
    StopRequest(const StopRequest&) = delete;
    StopRequest& operator=(const StopRequest&) = delete;

    bool IsMade() const;
    /// Can be read once it is made.
    int Descriptor() const { return m_descriptor; }
    /// Ends the program as the signal would have.
    void Obey() const;

    /// For a process that was forked off: what it is asked for itself concerns no other.
    static void KeepToItself();

    /// For the handler of signals: whether one is done with by the request. Without a call into the system that such a
    /// handler must not make.
    static bool Takes(int number);

  private:
    bool TakesAsRequest(int number);

    static StopRequest* s_current;

    int m_descriptor;
    std::atomic<int> m_number{0};  ///< of the signal
    timespec m_time{};             ///< when it came
    bool m_isForAll = true;
};

}  // namespace stmdcm
