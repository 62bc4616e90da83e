#include "trace/usecase/CTUsecaseInfo.h"

#include "trace/usecase/UsecaseInfoBody.h"

namespace Zu::Wep::Trace {

/// In the order of the block's lines.
template <>
struct UsecaseFields<CTUsecaseInfo> {
    static constexpr BlockField<CTUsecaseInfo> kTable[] = {
        {"sid", &CTUsecaseInfo::m_moduleId},    {"name", &CTUsecaseInfo::m_moduleName},
        {"jobid", &CTUsecaseInfo::m_jobNum},    {"probe", &CTUsecaseInfo::m_probeName},
        {"sw", &CTUsecaseInfo::m_sampleWindow}, {"cr", &CTUsecaseInfo::m_clockRate},
        {"df", &CTUsecaseInfo::m_dividFactor},  {"mode", &CTUsecaseInfo::m_moduleMode},
        {"do", &CTUsecaseInfo::m_dataOptions},
    };
};

const UsecaseKind CTUsecaseInfo::kKind = UsecaseKind::Cpt;

template class UsecaseInfoBase<CTUsecaseInfo, CTUsecaseInfoIF>;

namespace {

std::uint32_t OptionBit(eCTDataOption option) { return std::uint32_t{1} << (static_cast<std::uint32_t>(option) & 31U); }

}  // namespace

void CTUsecaseInfo::SetModuleId(unsigned int id) { m_moduleId = id; }

unsigned int CTUsecaseInfo::GetModuleId() const { return m_moduleId; }

void CTUsecaseInfo::SetModuleName(const char* name) { m_moduleName = name; }

const char* CTUsecaseInfo::GetModuleName() const { return m_moduleName.c_str(); }

void CTUsecaseInfo::SetProbeName(const char* name) { m_probeName = name; }

const char* CTUsecaseInfo::GetProbeName() const { return m_probeName.c_str(); }

void CTUsecaseInfo::SetSampleWindow(unsigned int window) { m_sampleWindow = window; }

unsigned int CTUsecaseInfo::GetSampleWindow() const { return m_sampleWindow; }

void CTUsecaseInfo::SetJobNum(int job) { m_jobNum = job; }

int CTUsecaseInfo::GetJobNum() const { return m_jobNum; }

void CTUsecaseInfo::SetDataOptions(eCTDataOption option, bool enable) {
    m_dataOptions = enable ? m_dataOptions | OptionBit(option) : m_dataOptions & ~OptionBit(option);
}

bool CTUsecaseInfo::IsOptionEnabled(eCTDataOption option) const { return (m_dataOptions & OptionBit(option)) != 0; }

void CTUsecaseInfo::SetClockRate(unsigned int rate) { m_clockRate = rate; }

unsigned int CTUsecaseInfo::GetClockRate() const { return m_clockRate; }

void CTUsecaseInfo::SetDividFactor(unsigned int factor) { m_dividFactor = factor; }

unsigned int CTUsecaseInfo::GetDividFactor() const { return m_dividFactor; }

void CTUsecaseInfo::SetModuleMode(unsigned int mode) { m_moduleMode = mode; }

unsigned int CTUsecaseInfo::GetModuleMode() const { return m_moduleMode; }

void CTUsecaseInfo::CleanUp() { *this = CTUsecaseInfo(); }

}  // namespace Zu::Wep::Trace
