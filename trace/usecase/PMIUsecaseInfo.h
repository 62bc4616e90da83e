#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "trace/format/UsecaseKind.h"
#include "trace/usecase/UsecaseInfoIFBase.h"

namespace Zu::Wep::Trace {

class BlockLines;
class BlockWriteReporter;
template <class Owner>
struct BlockField;

/// A PMI/CMI use case and its block text (docs/use-case-blocks.md): a source, "PMI", "CMI0" or "CMI1", which it keeps
/// as its module name, and a sample window. It has no module id, probe or job: hosts set them as they do for every
/// kind, which does nothing (docs/host-guide.md).
class PMIUsecaseInfo : public UsecaseInfoIFBase {
  public:
    PMIUsecaseInfo();
    PMIUsecaseInfo(const PMIUsecaseInfo& other) = default;
    PMIUsecaseInfo& operator=(const PMIUsecaseInfo& other);

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
    virtual ~PMIUsecaseInfo();

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

    static constexpr UsecaseKind kKind = UsecaseKind::Pmi;

  private:
    static std::span<const BlockField<PMIUsecaseInfo>> Fields();

    std::string m_moduleName;
    std::uint32_t m_sampleWindow = 65535;
    std::int32_t m_jobNum = -1;  // Part of the layout; nothing reads it.
};

}  // namespace Zu::Wep::Trace
