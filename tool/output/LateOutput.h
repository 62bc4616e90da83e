#pragma once

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace stmdcm {

/// Hands text on in fewer and larger pieces, each a few milliseconds after it came at the latest, whatever the one who
/// adds it does meanwhile: a call into the system for each of many short lines costs more than the lines. Its thread
/// does nothing but that, and takes no signals: a SIGPIPE that its writing brings becomes one of the thread that made
/// this.
class LateOutput {
  public:
    using Sink = std::function<void(std::string_view)>;

    /// `sink` is called by one thread at a time and may throw, which whoever adds or flushes next is told.
    explicit LateOutput(Sink sink) : m_sink(std::move(sink)) {}
    /// Hands on what is left, if it can be.
    ~LateOutput();
    LateOutput(const LateOutput&) = delete;
    LateOutput& operator=(const LateOutput&) = delete;

    enum class When { Soon, Now };
    /// Gives, where it is to be now, when all is handed on.
    void Add(std::string_view text, When when = When::Soon);
    void Flush();
    /// How many of the texts that were added are handed on. Can be asked within a signal handler.
    const std::atomic<std::uint64_t>& HandedOn() const { return m_handedOn; }

  private:
    void HandOn();
    void HandOnInTime();
    void PassSignalOn() const;
    void Start();

    static constexpr std::chrono::milliseconds kLatest{10};
    static constexpr std::size_t kMost = 1 << 16;

    Sink m_sink;
    std::mutex m_mutex;  ///< of all that follows, and of calls of the sink
    std::condition_variable m_change;
    std::string m_text;
    std::uint64_t m_added = 0;
    std::atomic<std::uint64_t> m_handedOn{0};
    std::exception_ptr m_failure;
    bool m_isEnd = false;
    pthread_t m_owner = ::pthread_self();
    std::thread m_thread;  ///< none before anything was added
};

}  // namespace stmdcm
