#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string>

#include "trace/usecase/UsecaseInfoBase.h"
#include "trace/usecase/UsecaseInfoIFBase.h"

namespace Zu::Wep::Trace {

/// A PMI/CMI use case and its block text (docs/use-case-blocks.md): a source, "PMI", "CMI0" or "CMI1", which it keeps
/// as its module name, and a sample window. It has no module id, probe or job: hosts set them as they do for every
/// kind, which does nothing (docs/host-guide.md).
class PMIUsecaseInfo : public UsecaseInfoBase<PMIUsecaseInfo, UsecaseInfoIFBase> {
  public:
    PMIUsecaseInfo() = default;
    PMIUsecaseInfo(const PMIUsecaseInfo& other) = default;
    /// Without the job-number field, which nothing reads: hosts get -1 whatever it holds.
    PMIUsecaseInfo& operator=(const PMIUsecaseInfo& other) {
        if (this != &other) {
            m_moduleName = other.m_moduleName;
            m_sampleWindow = other.m_sampleWindow;
        }
        return *this;
    }

    void SetModuleId(unsigned int /*id*/) override {}
    unsigned int GetModuleId() const override { return std::numeric_limits<std::uint32_t>::max(); }
    void SetModuleName(const char* name) override { m_moduleName = name; }
    const char* GetModuleName() const override { return m_moduleName.c_str(); }
    void SetProbeName(const char* /*name*/) override {}
    const char* GetProbeName() const override { return nullptr; }
    void SetSampleWindow(unsigned int window) override { m_sampleWindow = window; }
    unsigned int GetSampleWindow() const override { return m_sampleWindow; }
    void SetJobNum(int /*job*/) override {}
    int GetJobNum() const override { return -1; }
    virtual ~PMIUsecaseInfo() = default;

    /// Sets every field to its default.
    void CleanUp() {
        *this = PMIUsecaseInfo();
        m_jobNum = -1;
    }

    /// In the order of the block's lines.
    static std::span<const BlockField<PMIUsecaseInfo>> Fields() {
        static constexpr BlockField<PMIUsecaseInfo> fields[] = {
            {"name", &PMIUsecaseInfo::m_moduleName},
            {"sw", &PMIUsecaseInfo::m_sampleWindow},
        };
        return fields;
    }

    static constexpr UsecaseKind kKind = UsecaseKind::Pmi;

  private:
    std::string m_moduleName;
    std::uint32_t m_sampleWindow = 65535;
    std::int32_t m_jobNum = -1;  // Part of the layout; nothing reads it.
};

}  // namespace Zu::Wep::Trace
