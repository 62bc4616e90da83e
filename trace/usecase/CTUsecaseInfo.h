#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "trace/usecase/CTUsecaseInfoIF.h"
#include "trace/usecase/UsecaseInfoBase.h"

namespace Zu::Wep::Trace {

/// A CP-tracer use case and its block text (docs/use-case-blocks.md).
class CTUsecaseInfo : public UsecaseInfoBase<CTUsecaseInfo, CTUsecaseInfoIF> {
  public:
    void SetModuleId(unsigned int id) override { m_moduleId = id; }
    unsigned int GetModuleId() const override { return m_moduleId; }
    void SetModuleName(const char* name) override { m_moduleName = name; }
    const char* GetModuleName() const override { return m_moduleName.c_str(); }
    void SetProbeName(const char* name) override { m_probeName = name; }
    const char* GetProbeName() const override { return m_probeName.c_str(); }
    void SetSampleWindow(unsigned int window) override { m_sampleWindow = window; }
    unsigned int GetSampleWindow() const override { return m_sampleWindow; }
    void SetJobNum(int job) override { m_jobNum = job; }
    int GetJobNum() const override { return m_jobNum; }
    void SetDataOptions(eCTDataOption option, bool enable) override {
        m_dataOptions = enable ? m_dataOptions | Bit(option) : m_dataOptions & ~Bit(option);
    }
    bool IsOptionEnabled(eCTDataOption option) const override { return (m_dataOptions & Bit(option)) != 0; }
    void SetClockRate(unsigned int rate) override { m_clockRate = rate; }
    unsigned int GetClockRate() const override { return m_clockRate; }
    void SetDividFactor(unsigned int factor) override { m_dividFactor = factor; }
    unsigned int GetDividFactor() const override { return m_dividFactor; }
    void SetModuleMode(unsigned int mode) override { m_moduleMode = mode; }
    unsigned int GetModuleMode() const override { return m_moduleMode; }

    /// Sets every field to its default.
    void CleanUp() { *this = CTUsecaseInfo(); }

    /// In the order of the block's lines.
    static std::span<const BlockField<CTUsecaseInfo>> Fields() {
        static constexpr BlockField<CTUsecaseInfo> fields[] = {
            {"sid", &CTUsecaseInfo::m_moduleId},    {"name", &CTUsecaseInfo::m_moduleName},
            {"jobid", &CTUsecaseInfo::m_jobNum},    {"probe", &CTUsecaseInfo::m_probeName},
            {"sw", &CTUsecaseInfo::m_sampleWindow}, {"cr", &CTUsecaseInfo::m_clockRate},
            {"df", &CTUsecaseInfo::m_dividFactor},  {"mode", &CTUsecaseInfo::m_moduleMode},
            {"do", &CTUsecaseInfo::m_dataOptions},
        };
        return fields;
    }

    static constexpr UsecaseKind kKind = UsecaseKind::Cpt;

  private:
    static std::uint32_t Bit(eCTDataOption option) {
        return std::uint32_t{1} << (static_cast<std::uint32_t>(option) & 31U);
    }

    // Other defaults than those of an SC use case (docs/use-case-blocks.md).
    std::uint32_t m_moduleId = 0;
    std::string m_moduleName;
    std::string m_probeName;
    std::uint32_t m_sampleWindow = 65535;
    std::int32_t m_jobNum = -1;
    std::uint32_t m_clockRate = 0;
    std::uint32_t m_dividFactor = 1;
    std::uint32_t m_moduleMode = 1;
    std::uint32_t m_dataOptions = 254;
};

}  // namespace Zu::Wep::Trace
