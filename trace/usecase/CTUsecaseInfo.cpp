#include "trace/usecase/CTUsecaseInfo.h"

namespace Zu::Wep::Trace {
namespace {

std::uint32_t OptionBit(eCTDataOption option) { return std::uint32_t{1} << (static_cast<std::uint32_t>(option) & 31U); }

}  // namespace

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

}  // namespace Zu::Wep::Trace
