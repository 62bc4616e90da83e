#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>

namespace ZU_WEP {

/// A mutex that the thread which holds it may lock again; each `Lock` needs its `Unlock`.
class uMutex {
  public:
    /// Holds the mutex for a scope.
    class Guard {
      public:
        explicit Guard(uMutex& mutex) : m_mutex(mutex) { m_mutex.Lock(); }
        ~Guard() { m_mutex.Unlock(); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

      private:
        uMutex& m_mutex;
    };

    uMutex() = default;
    ~uMutex();
    uMutex(const uMutex&) = delete;
    uMutex& operator=(const uMutex&) = delete;

    /// False when the system mutex could not be locked.
    bool Lock();
    /// False, and nothing done, for a thread that does not hold the mutex.
    bool Unlock();
    bool IsLocked() const;
    /// The thread that holds the mutex, 0 when none does.
    pthread_t GetOwnerThreadHandle() const;

  private:
    std::int32_t LockCount() const { return m_lockCount.load(std::memory_order_relaxed); }
    void SetLockCount(std::int32_t count) { m_lockCount.store(count, std::memory_order_relaxed); }

    pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
    std::atomic<std::int32_t> m_lockCount{0};
    std::atomic<pthread_t> m_owner{0};
};

}  // namespace ZU_WEP
