#include "trace/usecase/PMIUsecaseRecord.h"

#include <algorithm>

#include "trace/usecase/UsecaseRecordBody.h"

namespace Zu::Wep::Trace {

void PMIUsecaseRecord::RemoveUsecase(int source) {
    const auto index = static_cast<unsigned int>(source);
    KeepOnly([index](const PMIUsecaseInfo& usecase) {
        return index < kSourceNames.size() && usecase.GetModuleName() != kSourceNames[index];
    });
}

UsecaseInfoIFBase* PMIUsecaseRecord::GetUsecase(unsigned int source) {
    if (source >= kSourceNames.size()) {
        return nullptr;
    }
    const auto found = std::find_if(m_usecases.begin(), m_usecases.end(), [source](const PMIUsecaseInfo& usecase) {
        return usecase.GetModuleName() == kSourceNames[source];
    });
    return found == m_usecases.end() ? nullptr : &*found;
}

}  // namespace Zu::Wep::Trace
