#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tool/check/Findings.h"
#include "trace/dcm/SettingsText.h"
#include "trace/dcm/StmPropertyTable.h"

namespace stmdcm {

/// A line that the readers of the use cases get, and where it came from. Points into the text that was checked.
struct BlockLine {
    std::size_t number;
    std::string_view text;
};

/// What a reader makes of a settings text (docs/settings-text.md).
struct SettingsModel {
    Zu::Wep::Trace::StmProperties properties;
    std::array<std::size_t, Zu::Wep::Trace::kStmProperties.size()> setOnLine{};  ///< 0: not set
    std::vector<BlockLine> blocks;
    bool clean = true;  ///< what loading gives for a settings file
};

enum class SettingsKind {
    File,     ///< its lines have limits, and loading tells whether all was understood
    Section,  ///< STMDECODERINFO
    DeviceId  ///< DEVID: names that are no properties are passed over
};

/// Checks a settings text the way it is read.
class SettingsCheck {
  public:
    /// Borrows both; `place` is that of the section.
    SettingsCheck(SettingsKind kind, Place place, Findings& findings, SettingsModel& model);

    void Run(std::string_view text);

  private:
    void RunDeviceId();
    bool TakeLine(std::size_t index);
    bool TakeProperty(std::size_t index);
    void TakePacked(std::size_t index);
    bool Apply(std::size_t index, std::string_view key, std::string_view value);
    void TakeBlocks();
    void TellEnd();
    bool TellWhyEnded(std::size_t rest);
    void TellUnreadLines();
    void TellUnset();
    std::string_view Limited(std::size_t index, std::size_t limit);
    std::size_t CountText(std::size_t begin, std::size_t end) const;
    void Add(const FindingKind& kind, std::size_t index, std::string what, std::string effect);

    SettingsKind m_kind;
    Place m_place;
    Findings& m_findings;
    SettingsModel& m_model;
    Zu::Wep::Trace::LineLimits m_limits;
    std::vector<std::string_view> m_lines;
    std::size_t m_end = 0;  ///< the line that ended the properties
};

}  // namespace stmdcm
