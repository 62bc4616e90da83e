#include "trace/usecase/PMIUsecaseInfo.h"

#include <limits>

#include "trace/usecase/UsecaseInfoBody.h"

namespace Zu::Wep::Trace {

/// In the order of the block's lines.
template <>
struct UsecaseFields<PMIUsecaseInfo> {
    static constexpr BlockField<PMIUsecaseInfo> kTable[] = {
        {"name", &PMIUsecaseInfo::m_moduleName},
        {"sw", &PMIUsecaseInfo::m_sampleWindow},
    };
};

const UsecaseKind PMIUsecaseInfo::kKind = UsecaseKind::Pmi;

template class UsecaseInfoBase<PMIUsecaseInfo, UsecaseInfoIFBase>;

PMIUsecaseInfo::PMIUsecaseInfo() = default;

PMIUsecaseInfo::PMIUsecaseInfo(const PMIUsecaseInfo& other) = default;

PMIUsecaseInfo& PMIUsecaseInfo::operator=(const PMIUsecaseInfo& other) {
    if (this != &other) {
        m_moduleName = other.m_moduleName;
        m_sampleWindow = other.m_sampleWindow;
    }
    return *this;
}

PMIUsecaseInfo::~PMIUsecaseInfo() = default;

void PMIUsecaseInfo::SetModuleId(unsigned int /*id*/) {}

unsigned int PMIUsecaseInfo::GetModuleId() const { return std::numeric_limits<std::uint32_t>::max(); }

void PMIUsecaseInfo::SetModuleName(const char* name) { m_moduleName = name; }

const char* PMIUsecaseInfo::GetModuleName() const { return m_moduleName.c_str(); }

void PMIUsecaseInfo::SetProbeName(const char* /*name*/) {}

const char* PMIUsecaseInfo::GetProbeName() const { return nullptr; }

void PMIUsecaseInfo::SetSampleWindow(unsigned int window) { m_sampleWindow = window; }

unsigned int PMIUsecaseInfo::GetSampleWindow() const { return m_sampleWindow; }

void PMIUsecaseInfo::SetJobNum(int /*job*/) {}

int PMIUsecaseInfo::GetJobNum() const { return -1; }

void PMIUsecaseInfo::CleanUp() {
    *this = PMIUsecaseInfo();
    m_jobNum = -1;
}

}  // namespace Zu::Wep::Trace
