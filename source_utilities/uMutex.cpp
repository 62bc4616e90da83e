#include "source_utilities/uMutex.h"

namespace ZU_WEP {

uMutex::~uMutex() { pthread_mutex_destroy(&m_mutex); }

bool uMutex::Lock() {
    // Read without the system mutex: only the thread that holds it can find itself here.
    if (m_owner != pthread_self()) {
        if (pthread_mutex_lock(&m_mutex) != 0) {
            return false;
        }
        m_owner = pthread_self();
    }
    ++m_lockCount;
    return true;
}

bool uMutex::Unlock() {
    if (m_owner != pthread_self()) {
        return false;
    }
    if (m_lockCount < 1) {
        return true;
    }
    if (--m_lockCount == 0) {
        m_owner = 0;
        pthread_mutex_unlock(&m_mutex);
    }
    return true;
}

bool uMutex::IsLocked() const { return m_lockCount > 0; }

pthread_t uMutex::GetOwnerThreadHandle() const { return m_owner; }

}  // namespace ZU_WEP
