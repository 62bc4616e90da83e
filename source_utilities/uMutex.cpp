#include "source_utilities/uMutex.h"

namespace ZU_WEP {

uMutex::~uMutex() { pthread_mutex_destroy(&m_mutex); }

// Only the thread that holds the system mutex changes owner and count, and any other need only see that the owner is
// not itself: the mutex orders all the rest.
bool uMutex::Lock() {
    if (GetOwnerThreadHandle() != pthread_self()) {
        if (pthread_mutex_lock(&m_mutex) != 0) {
            return false;
        }
        m_owner.store(pthread_self(), std::memory_order_relaxed);
    }
    SetLockCount(LockCount() + 1);
    return true;
}

bool uMutex::Unlock() {
    if (GetOwnerThreadHandle() != pthread_self()) {
        return false;
    }
    if (LockCount() < 1) {
        return true;
    }
    SetLockCount(LockCount() - 1);
    if (LockCount() == 0) {
        m_owner.store(0, std::memory_order_relaxed);
        pthread_mutex_unlock(&m_mutex);
    }
    return true;
}

bool uMutex::IsLocked() const { return LockCount() > 0; }

pthread_t uMutex::GetOwnerThreadHandle() const { return m_owner.load(std::memory_order_relaxed); }

}  // namespace ZU_WEP
