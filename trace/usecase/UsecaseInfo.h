#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "trace/usecase/UsecaseInfoBase.h"
#include "trace/usecase/UsecaseInfoIF.h"

namespace Zu::Wep::Trace {

/// A statistics-counter use case and its block text (docs/use-case-blocks.md).
class UsecaseInfo : public UsecaseInfoBase<UsecaseInfo, UsecaseInfoIF> {
  public:
    UsecaseInfo() = default;
    UsecaseInfo(const UsecaseInfo& other) = default;
    UsecaseInfo(UsecaseInfo&& other) noexcept = default;
    /// Not a plain copy (docs/host-guide.md): the probe name stays, counters and formulas are appended to those held.
    /// Containers of use cases therefore never assign their elements; they copy-construct them.
    UsecaseInfo& operator=(const UsecaseInfo& other) {
        // Copies first: the source may be this object, whose lists then double as any other's would.
        const std::vector<_CounterLineInfo> counters = other.m_counters;
        const std::vector<FormulaInfo> formulas = other.m_formulas;
        m_moduleId = other.m_moduleId;
        m_moduleName = other.m_moduleName;
        m_sampleWindow = other.m_sampleWindow;
        m_jobNum = other.m_jobNum;
        m_suppress = other.m_suppress;
        m_counters.insert(m_counters.end(), counters.begin(), counters.end());
        m_formulas.insert(m_formulas.end(), formulas.begin(), formulas.end());
        return *this;
    }

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
    void SetSuppress(bool suppress) override { m_suppress = suppress; }
    bool GetSuppress() const override { return m_suppress; }
    void AddCounter(const _CounterLineInfo* counter) override;
    void AddFormula(const char* name, const char* formula, const char* unit, unsigned int ofmask) override;
    unsigned int GetNumCounters() const override;
    unsigned int GetNumFormulars() const override;
    _CounterLineInfo* GetCounterInfo(unsigned int index) override;
    FormulaInfo* GetFormula(unsigned int index) override;
    ~UsecaseInfo() override = default;

    /// Sets every field to its default.
    void CleanUp() {
        m_moduleId = 0;
        m_moduleName.clear();
        m_probeName.clear();
        m_counters.clear();
        m_formulas.clear();
        m_sampleWindow = 0;
        m_jobNum = -1;
        m_suppress = false;
    }
    /// Handles one key line. With `inFormula` it is the first line of a formula, the rest of which is read from `in`.
    /// Returns 0 handled or ignored, 1 no "=" in the line, -1 line too long.
    int ProccessLine(const char* line, bool inFormula, std::istringstream& in);

    void Export(std::string& out, BlockWriteReporter& reporter) const;
    int Import(std::string_view line, BlockLines& in);

    /// In the order of the block's lines; counters and formulas apart.
    static std::span<const BlockField<UsecaseInfo>> Fields() {
        static constexpr BlockField<UsecaseInfo> fields[] = {
            {"id", &UsecaseInfo::m_moduleId},     {"name", &UsecaseInfo::m_moduleName},
            {"jobid", &UsecaseInfo::m_jobNum},    {"probe", &UsecaseInfo::m_probeName},
            {"sw", &UsecaseInfo::m_sampleWindow}, {"suppress", &UsecaseInfo::m_suppress},
        };
        return fields;
    }
    static std::vector<std::string_view> FormulaKeys();

    static constexpr UsecaseKind kKind = UsecaseKind::Sc;

  private:
    int StoreKeyLine(std::string_view line, const BlockLines& in);
    LineResult ReadFormula(std::string_view& line, BlockLines& in);
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

}  // namespace Zu::Wep::Trace
