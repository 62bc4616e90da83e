#include "trace/usecase/PMIUsecaseInfo.h"

#include "trace/format/BlockField.h"
#include "trace/usecase/UsecaseLog.h"

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

std::vector<std::string_view> PMIUsecaseInfo::Keys() { return KeysOf(Fields()); }

int PMIUsecaseInfo::DoExport(std::string& out) const {
    UsecaseLog log;
    Export(out, log);
    return 0;
}

void PMIUsecaseInfo::Export(std::string& out, BlockWriteReporter& reporter) const {
    WriteTypedBlock(out, NamesOf(kKind).Type(), *this, Fields(), reporter);
}

int PMIUsecaseInfo::DoImport(const char* line, std::istringstream& in) {
    BlockLines lines(kKind, in);
    return Import(line, lines);
}

int PMIUsecaseInfo::Import(std::string_view line, BlockLines& in) {
    return ReadTypedBlock(line, in, NamesOf(kKind).typeLine, *this, Fields());
}

int PMIUsecaseInfo::ProccessLine(const char* line, std::istringstream& in) {
    return StoreLine(*this, Fields(), line, BlockLines(kKind, in));
}

int PMIUsecaseInfo::SearchForNextUsecase(const char* line, std::istringstream& in) {
    BlockLines lines(kKind, in);
    return SearchForNextBlock(line, lines);
}

}  // namespace Zu::Wep::Trace
