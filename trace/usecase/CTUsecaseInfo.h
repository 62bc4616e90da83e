#pragma once

#include <cstdint>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "trace/format/UsecaseKind.h"
#include "trace/usecase/CTUsecaseInfoIF.h"

namespace Zu::Wep::Trace {

class BlockLines;
class BlockWriteReporter;
template <class Owner>
struct BlockField;

/// A CP-tracer use case and its block text (docs/use-case-blocks.md).
class CTUsecaseInfo : public CTUsecaseInfoIF {
  public:
    CTUsecaseInfo();
    CTUsecaseInfo(const CTUsecaseInfo& other) = default;
    CTUsecaseInfo& operator=(const CTUsecaseInfo& other) = default;

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
    void SetDataOptions(eCTDataOption option, bool enable) override;
    bool IsOptionEnabled(eCTDataOption option) const override;
    void SetClockRate(unsigned int rate) override { m_clockRate = rate; }
    unsigned int GetClockRate() const override { return m_clockRate; }
    void SetDividFactor(unsigned int factor) override { m_dividFactor = factor; }
    unsigned int GetDividFactor() const override { return m_dividFactor; }
    void SetModuleMode(unsigned int mode) override { m_moduleMode = mode; }
    unsigned int GetModuleMode() const override { return m_moduleMode; }
    ~CTUsecaseInfo() override;

    /// Sets every field to its default.
    void CleanUp();
    /// Appends the block. Returns 0.
    int DoExport(std::string& out) const;
    /// Reads one block into this object, which the caller has reset. `line` is the line read last: "{" means that the
    /// block is already open. Returns 0 done, 1 no block of this kind here, -1 bad block.
    int DoImport(const char* line, std::istringstream& in);
    /// Handles one key line. Returns 0 handled or ignored, 1 no "=" in the line, -1 line too long.
    int ProccessLine(const char* line, std::istringstream& in);
    /// Reads up to and including the next opening line. Returns 0 found, 1 not found.
    static int SearchForNextUsecase(const char* line, std::istringstream& in);

    /// `DoExport` and `DoImport` to and from lines, telling a reporter what they meet.
    void Export(std::string& out, BlockWriteReporter& reporter) const;
    int Import(std::string_view line, BlockLines& in);

    /// The keys that a block sets, in the order of its lines; counters and formulas apart.
    static std::vector<std::string_view> Keys();

    static constexpr UsecaseKind kKind = UsecaseKind::Cpt;

  private:
    static std::span<const BlockField<CTUsecaseInfo>> Fields();

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
