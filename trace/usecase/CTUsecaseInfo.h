#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include <cstdint>
#include <string>

#include "trace/usecase/CTUsecaseInfoIF.h"
#include "trace/usecase/UsecaseInfoBase.h"

namespace Zu::Wep::Trace {

/// A CP-tracer use case and its block text (docs/use-case-blocks.md).
class CTUsecaseInfo : public UsecaseInfoBase<CTUsecaseInfo, CTUsecaseInfoIF> {
  public:
    void SetModuleId(unsigned int id) override;
    unsigned int GetModuleId() const override;
    void SetModuleName(const char* name) override;
    const char* GetModuleName() const override;
    void SetProbeName(const char* name) override;
    const char* GetProbeName() const override;
    void SetSampleWindow(unsigned int window) override;
    unsigned int GetSampleWindow() const override;
    void SetJobNum(int job) override;
    int GetJobNum() const override;
    void SetDataOptions(eCTDataOption option, bool enable) override;
    bool IsOptionEnabled(eCTDataOption option) const override;
    void SetClockRate(unsigned int rate) override;
    unsigned int GetClockRate() const override;
    void SetDividFactor(unsigned int factor) override;
    unsigned int GetDividFactor() const override;
    void SetModuleMode(unsigned int mode) override;
    unsigned int GetModuleMode() const override;

    /// Sets every field to its default.
    void CleanUp();

    static const UsecaseKind kKind;

  private:
    friend struct UsecaseFields<CTUsecaseInfo>;

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

extern template class UsecaseInfoBase<CTUsecaseInfo, CTUsecaseInfoIF>;

}  // namespace Zu::Wep::Trace
