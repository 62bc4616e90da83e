#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "trace/usecase/UsecaseInfoBase.h"
#include "trace/usecase/UsecaseInfoIF.h"

namespace Zu::Wep::Trace {

/// A statistics-counter use case and its block text (docs/use-case-blocks.md).
class UsecaseInfo : public UsecaseInfoBase<UsecaseInfo, UsecaseInfoIF> {
  public:
    UsecaseInfo();
    UsecaseInfo(const UsecaseInfo& other);
    UsecaseInfo(UsecaseInfo&& other) noexcept;
    /// Not a plain copy (docs/host-guide.md): the probe name stays, counters and formulas are appended to those held.
    /// Containers of use cases therefore never assign their elements; they copy-construct them.
    UsecaseInfo& operator=(const UsecaseInfo& other);

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
    void SetSuppress(bool suppress) override;
    bool GetSuppress() const override;
    void AddCounter(const _CounterLineInfo* counter) override;
    void AddFormula(const char* name, const char* formula, const char* unit, unsigned int ofmask) override;
    unsigned int GetNumCounters() const override;
    unsigned int GetNumFormulars() const override;
    _CounterLineInfo* GetCounterInfo(unsigned int index) override;
    FormulaInfo* GetFormula(unsigned int index) override;
    ~UsecaseInfo() override;

    /// Sets every field to its default.
    void CleanUp();
    /// Handles one key line. With `inFormula` it is the first line of a formula, the rest of which is read from `in`.
    /// Returns 0 handled or ignored, 1 no "=" in the line, -1 line too long.
    int ProccessLine(const char* line, bool inFormula, std::istringstream& in);

    void Export(std::string& out, BlockWriteReporter& reporter) const;
    int Import(std::string_view line, BlockLines& in);

    static std::vector<std::string_view> FormulaKeys();

    static const UsecaseKind kKind;

  private:
    friend struct UsecaseFields<UsecaseInfo>;

    int StoreKeyLine(std::string_view line, const BlockLines& in);
    int ReadFormulaLines(std::string_view& line, BlockLines& in);

    std::uint32_t m_moduleId = 0;
    std::string m_moduleName;
    std::string m_probeName;
    std::vector<_CounterLineInfo> m_counters;
    std::vector<FormulaInfo> m_formulas;
    std::uint32_t m_sampleWindow = 0;
    std::int32_t m_jobNum = -1;
    bool m_suppress = false;
};

extern template class UsecaseInfoBase<UsecaseInfo, UsecaseInfoIF>;

}  // namespace Zu::Wep::Trace
