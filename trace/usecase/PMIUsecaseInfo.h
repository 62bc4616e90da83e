#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include <cstdint>
#include <string>

#include "trace/usecase/UsecaseInfoBase.h"
#include "trace/usecase/UsecaseInfoIFBase.h"

namespace Zu::Wep::Trace {

/// A PMI/CMI use case and its block text (docs/use-case-blocks.md): a source, "PMI", "CMI0" or "CMI1", which it keeps
/// as its module name, and a sample window. It has no module id, probe or job: hosts set them as they do for every
/// kind, which does nothing (docs/host-guide.md).
class PMIUsecaseInfo : public UsecaseInfoBase<PMIUsecaseInfo, UsecaseInfoIFBase> {
  public:
    PMIUsecaseInfo();
    PMIUsecaseInfo(const PMIUsecaseInfo& other);
    /// Without the job-number field, which nothing reads: hosts get -1 whatever it holds.
    PMIUsecaseInfo& operator=(const PMIUsecaseInfo& other);

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
    virtual ~PMIUsecaseInfo();

    /// Sets every field to its default.
    void CleanUp();

    static const UsecaseKind kKind;

  private:
    friend struct UsecaseFields<PMIUsecaseInfo>;

    std::string m_moduleName;
    std::uint32_t m_sampleWindow = 65535;
    std::int32_t m_jobNum = -1;  // Part of the layout; nothing reads it.
};

extern template class UsecaseInfoBase<PMIUsecaseInfo, UsecaseInfoIFBase>;

}  // namespace Zu::Wep::Trace
