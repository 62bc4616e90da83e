#pragma once

// The text that holds a configuration: property lines, then use-case blocks. The format is docs/settings-text.md.

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "trace/format/BlockLines.h"
#include "trace/format/StmProperties.h"

namespace Zu::Wep::Trace {

/// Appends the 26 property lines.
void AppendPropertyLines(const StmProperties& properties, std::string& out);

/// Unfolds the one-line block in `line` ("{type=SC,id=3}"), which it changes, into a block of lines in `out`. Gives the
/// number of lines.
std::size_t UnfoldPackedBlock(std::string& out, char* line);

/// How long the lines of a text may be, blanks, tabs and CR at their end not counted; longer ones are cut, and the rest
/// of them is skipped.
struct LineLimits {
    std::size_t property = std::string::npos;
    std::size_t block = std::string::npos;
};

/// The limits of settings files. A capture's text has none.
inline constexpr LineLimits kFileLineLimits{999, 126};
/// In bytes; what is behind is not read.
inline constexpr std::size_t kMaxSettingsFileSize = std::size_t{128} << 20;

/// Applies one property; false when there is none of that name.
using ApplyProperty = std::function<bool(std::string_view name, std::string_view value)>;

/// Reads a settings text: the properties at once, the blocks for the records to read, each its own.
class SettingsText {
  public:
    /// Reads `text`, in place: what it refers to lies in the text. Without a reporter nobody hears what is met.
    SettingsText(std::string text, const LineLimits& limits, const ApplyProperty& apply, TextReporter* reporter);
    SettingsText(const SettingsText&) = delete;
    SettingsText& operator=(const SettingsText&) = delete;

    /// Whether every line was within its limit and every property line was understood. The empty line that follows a
    /// final line feed is a line too, and no property.
    bool IsClean() const { return m_isClean; }

    const BlockText& Blocks() const { return m_blocks; }

  private:
    /// A line as far as it is read.
    struct Line {
        std::size_t start = 0;
        std::size_t length = 0;
        std::size_t number = 0;
    };

    Line NextLine(std::size_t limit);
    std::string_view TextOf(const Line& line) const { return std::string_view(m_text).substr(line.start, line.length); }
    bool TakeLine(const Line& line, const ApplyProperty& apply);
    void EndFields(const PropertyLine& line);
    void TakePacked(const Line& line);
    void TakeBlocks(const Line& first);
    void TellUnread();
    void TellEnd(const Line& line, PropertiesEnd why);

    std::string m_text;
    LineLimits m_limits;
    TextReporter* m_reporter;
    std::size_t m_position = 0;  ///< where the next line begins
    std::size_t m_lineCount = 0;
    bool m_isAtEnd = false;
    bool m_isClean = true;
    std::string m_unfolded;
    BlockText m_blocks;
};

/// Applies the properties among the lines of a device identification; all others are passed over.
void ReadDeviceText(std::string_view text, const ApplyProperty& apply, TextReporter* reporter);

}  // namespace Zu::Wep::Trace
