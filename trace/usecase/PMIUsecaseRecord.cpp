#include "trace/usecase/PMIUsecaseRecord.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Zu::Wep::Trace {
namespace {

constexpr std::array<std::string_view, 3> SourceNames = {"PMI", "CMI0", "CMI1"};

PMIUsecaseInfo sharedPMIUsecase;

}  // namespace

PMIUsecaseRecord::~PMIUsecaseRecord() = default;

void PMIUsecaseRecord::RemoveUsecase(int source) {
    const auto index = static_cast<unsigned int>(source);
    KeepOnly([index](const PMIUsecaseInfo& usecase) {
        return index < SourceNames.size() && usecase.GetModuleName() != SourceNames[index];
    });
}

UsecaseInfoIFBase* PMIUsecaseRecord::GetUsecase(unsigned int source) {
    if (source >= SourceNames.size()) {
        return nullptr;
    }
    const auto found = std::find_if(m_usecases.begin(), m_usecases.end(), [source](const PMIUsecaseInfo& usecase) {
        return usecase.GetModuleName() == SourceNames[source];
    });
    return found == m_usecases.end() ? nullptr : &*found;
}

UsecaseInfoIFBase* PMIUsecaseRecord::GetAUsecaseInfo() {
    sharedPMIUsecase.CleanUp();
    return &sharedPMIUsecase;
}

}  // namespace Zu::Wep::Trace
