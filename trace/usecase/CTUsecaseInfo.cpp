#include "trace/usecase/CTUsecaseInfo.h"

#include "trace/format/BlockField.h"
#include "trace/usecase/UsecaseLog.h"

namespace Zu::Wep::Trace {
namespace {

std::uint32_t OptionBit(eCTDataOption option) { return std::uint32_t{1} << (static_cast<std::uint32_t>(option) & 31U); }

}  // namespace

CTUsecaseInfo::CTUsecaseInfo() = default;

CTUsecaseInfo::~CTUsecaseInfo() = default;

void CTUsecaseInfo::CleanUp() { *this = CTUsecaseInfo(); }

void CTUsecaseInfo::SetDataOptions(eCTDataOption option, bool enable) {
    m_dataOptions = enable ? m_dataOptions | OptionBit(option) : m_dataOptions & ~OptionBit(option);
}

bool CTUsecaseInfo::IsOptionEnabled(eCTDataOption option) const { return (m_dataOptions & OptionBit(option)) != 0; }

std::span<const BlockField<CTUsecaseInfo>> CTUsecaseInfo::Fields() {
    static constexpr BlockField<CTUsecaseInfo> fields[] = {
        {"sid", &CTUsecaseInfo::m_moduleId},    {"name", &CTUsecaseInfo::m_moduleName},
        {"jobid", &CTUsecaseInfo::m_jobNum},    {"probe", &CTUsecaseInfo::m_probeName},
        {"sw", &CTUsecaseInfo::m_sampleWindow}, {"cr", &CTUsecaseInfo::m_clockRate},
        {"df", &CTUsecaseInfo::m_dividFactor},  {"mode", &CTUsecaseInfo::m_moduleMode},
        {"do", &CTUsecaseInfo::m_dataOptions},
    };
    return fields;
}

std::vector<std::string_view> CTUsecaseInfo::Keys() { return KeysOf(Fields()); }

int CTUsecaseInfo::DoExport(std::string& out) const {
    UsecaseLog log;
    Export(out, log);
    return 0;
}

void CTUsecaseInfo::Export(std::string& out, BlockWriteReporter& reporter) const {
    WriteTypedBlock(out, NamesOf(kKind).Type(), *this, Fields(), reporter);
}

int CTUsecaseInfo::DoImport(const char* line, std::istringstream& in) {
    BlockLines lines(kKind, in);
    return Import(line, lines);
}

int CTUsecaseInfo::Import(std::string_view line, BlockLines& in) {
    return ReadTypedBlock(line, in, NamesOf(kKind).typeLine, *this, Fields());
}

int CTUsecaseInfo::ProccessLine(const char* line, std::istringstream& in) {
    return StoreLine(*this, Fields(), line, BlockLines(kKind, in));
}

int CTUsecaseInfo::SearchForNextUsecase(const char* line, std::istringstream& in) {
    BlockLines lines(kKind, in);
    return SearchForNextBlock(line, lines);
}

}  // namespace Zu::Wep::Trace
