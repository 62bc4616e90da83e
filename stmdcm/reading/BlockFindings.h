#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "stmdcm/reading/Findings.h"
#include "trace/format/BlockLines.h"
#include "trace/format/TextReporter.h"

namespace stmdcm {

/// What one record made of a text.
struct KindReading {
    std::vector<std::size_t> openers;     ///< the lines that open the blocks that became use cases, in their order
    std::set<std::size_t> met;            ///< those, and the lines that open blocks that were dropped and told so
    std::optional<std::size_t> blankEnd;  ///< the blank line that ended the reading
};

/// Finds what is wrong with the blocks of a text (docs/check.md) while the three records read it, one behind the other.
class BlockFindings final : public Zu::Wep::Trace::TextReporter {
  public:
    using UsecaseKind = Zu::Wep::Trace::UsecaseKind;

    /// Borrows the text and the findings; `place` is that of the section.
    BlockFindings(const Zu::Wep::Trace::BlockText& text, Place place, Findings& findings);

    void OnBlockOpened(UsecaseKind kind, std::size_t line, std::string_view text) override;
    void OnKey(UsecaseKind kind, std::size_t line, const Zu::Wep::Trace::BlockKey& key) override;
    void OnFormulaOpened(std::size_t line) override;
    void OnFormulaSkipped(std::size_t line, std::string_view text) override;
    void OnFormulaEnded(std::size_t line, Zu::Wep::Trace::FormulaEnd how) override;
    void OnBlockRead(UsecaseKind kind, std::size_t line) override;
    void OnBlockDropped(UsecaseKind kind, std::size_t line, Zu::Wep::Trace::BlockFault fault,
                        std::string_view text) override;
    void OnBlocksEnd(UsecaseKind kind, std::size_t line, Zu::Wep::Trace::BlocksEnd why) override;

    /// Whether a block ended on that line without its "}".
    bool IsEndOfBlock(std::size_t line) const { return m_ends.contains(line); }

    const KindReading& Of(UsecaseKind kind) const { return m_readings[static_cast<std::size_t>(kind)]; }

  private:
    /// The keys that were set, each with its line.
    using Trail = std::map<std::string, std::size_t, std::less<>>;

    void TakeCounter(std::size_t line, const Zu::Wep::Trace::BlockKey& key);
    void TakeField(std::size_t line, const Zu::Wep::Trace::BlockKey& key);
    void TellValue(Zu::Wep::Trace::ValueShape shape, std::string_view key, const std::string& value, std::size_t line);
    void TellText(std::string_view key, std::string_view value, std::size_t line);
    void TellUnset(const char* what, std::size_t line, const Trail& trail, const std::vector<std::string_view>& keys);
    void TellFaults();
    void Add(const FindingKind& kind, std::size_t line, std::string what, std::string effect);
    void AddFault(const FindingKind& kind, std::size_t line, std::string what, std::string effect);

    Place m_place;
    Findings& m_findings;
    std::size_t m_lastLine = 0;  ///< of the text
    std::array<KindReading, Zu::Wep::Trace::kUsecaseKinds.size()> m_readings;
    std::set<std::size_t> m_ends;

    // Of the block that is being read:
    std::size_t m_opener = 0;
    bool m_isFirstLine = false;
    Trail m_keys;
    Trail m_formulaKeys;
    std::size_t m_formulaOpener = 0;
    std::string m_formula;
    Findings m_pending;             ///< gone when the block is dropped
    std::vector<Finding> m_faults;  ///< those that hold also then
};

}  // namespace stmdcm
