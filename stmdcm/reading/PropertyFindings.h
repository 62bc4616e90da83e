#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/Plausibility.h"
#include "trace/format/BlockLines.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

enum class TextKind {
    File,     ///< a settings file: its reader tells whether all was understood
    Section,  ///< STMDECODERINFO
    DeviceId  ///< DEVID: names that are no properties are passed over
};

/// Finds what is wrong with the lines of a settings text (docs/check.md) while it is read.
class PropertyFindings final : public Zu::Wep::Trace::TextReporter {
  public:
    /// Borrows the findings; `place` is that of the section.
    PropertyFindings(TextKind kind, Place place, Findings& findings);

    void OnLineCut(std::size_t line, std::size_t length, std::size_t limit) override;
    void OnZeroByte(std::size_t line, std::size_t length) override;
    void OnProperty(std::size_t line, const Zu::Wep::Trace::PropertyLine& property) override;
    void OnNoValue(std::size_t line, std::string_view name) override;
    void OnPackedBlock(std::size_t line, std::string_view text) override;
    void OnPropertiesEnd(std::size_t line, Zu::Wep::Trace::PropertiesEnd why, std::string_view text) override;
    void OnUnreadLine(std::size_t line, std::string_view text) override;

    /// Call it when the text is read, with what the records get of it.
    void Finish(const Zu::Wep::Trace::BlockText& blocks);

    /// The line that set the property last, 0 for none; in the order of the table.
    std::size_t SetOnLine(std::size_t index) const { return m_setOnLine[index]; }
    /// Where that is, and whether the text of the value fits; the place of the text for none.
    std::optional<Origin> OriginOf(std::size_t index) const;
    std::size_t CountSet() const;

  private:
    struct End {
        std::size_t line = 0;  ///< 0: the text ran out
        Zu::Wep::Trace::PropertiesEnd why = Zu::Wep::Trace::PropertiesEnd::Block;
        std::string text;
    };

    void TellBehindPacked();
    void TellInFrontOfBlocks(const Zu::Wep::Trace::BlockText& blocks);
    void TellWhyEnded(std::size_t rest);
    void TellUnset();
    void Add(const FindingKind& kind, std::size_t line, std::string what, std::string effect);

    TextKind m_kind;
    Place m_place;
    Findings& m_findings;
    std::array<std::size_t, Zu::Wep::Trace::kStmProperties.size()> m_setOnLine{};
    std::array<bool, Zu::Wep::Trace::kStmProperties.size()> m_fits{};  ///< of what was set
    End m_end;
    bool m_hasPacked = false;
    std::size_t m_unread = 0;  ///< lines that are not blank
    std::size_t m_firstUnread = 0;
};

}  // namespace stmdcm
