#include "trace/usecase/PMIUsecaseInfo.h"

#include "trace/usecase/BlockField.h"

namespace Zu::Wep::Trace {

PMIUsecaseInfo::PMIUsecaseInfo() = default;

PMIUsecaseInfo::~PMIUsecaseInfo() = default;

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

int PMIUsecaseInfo::DoExport(std::string& out) const {
    WriteTypedBlock(out, "PMI_CMI", *this, Fields());
    return 0;
}

int PMIUsecaseInfo::DoImport(const char* line, std::istringstream& in) {
    return ReadTypedBlock(line, in, "type=PMI_CMI", *this);
}

int PMIUsecaseInfo::ProccessLine(const char* line, std::istringstream& /*in*/) {
    return StoreLine(*this, Fields(), line);
}

int PMIUsecaseInfo::SearchForNextUsecase(const char* line, std::istringstream& in) {
    return SearchForNextBlock(line, in);
}

}  // namespace Zu::Wep::Trace
