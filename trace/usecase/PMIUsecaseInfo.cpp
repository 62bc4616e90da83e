#include "trace/usecase/PMIUsecaseInfo.h"

namespace Zu::Wep::Trace {

// Without the job-number field, which nothing reads: hosts get -1 whatever it holds.
PMIUsecaseInfo& PMIUsecaseInfo::operator=(const PMIUsecaseInfo& other) {
    if (this != &other) {
        m_moduleName = other.m_moduleName;
        m_sampleWindow = other.m_sampleWindow;
    }
    return *this;
}

void PMIUsecaseInfo::CleanUp() {
    *this = PMIUsecaseInfo();
    m_jobNum = -1;
}

std::span<const BlockField<PMIUsecaseInfo>> PMIUsecaseInfo::Fields() {
    static constexpr BlockField<PMIUsecaseInfo> fields[] = {
        {"name", &PMIUsecaseInfo::m_moduleName},
        {"sw", &PMIUsecaseInfo::m_sampleWindow},
    };
    return fields;
}

}  // namespace Zu::Wep::Trace
