#pragma once

// The text that holds a configuration: property lines, then use-case blocks. The format is docs/settings-text.md.

#include <cstddef>
#include <functional>
#include <istream>
#include <string>
#include <string_view>

#include "trace/dcm/StmProperties.h"

namespace Zu::Wep::Trace {

/// Appends the 26 property lines.
void AppendPropertyLines(const StmProperties& properties, std::string& out);

/// Unfolds the one-line block in `line` ("{type=SC,id=3}"), which it changes, into a block of lines in `out`.
void UnfoldPackedBlock(std::string& out, char* line);

struct KeyValue {
    std::string_view key;    ///< empty when the line has none
    std::string_view value;  ///< empty when the line has none
};

/// Splits `line` at blanks, "=", CR, LF and tabs and gives its first two fields, which stay in `line`. Works in place:
/// a zero byte overwrites the delimiter behind each of them.
KeyValue SplitKeyValue(std::string& line);

/// How long the lines of a text may be, without blanks, tabs and CR at their end; longer ones are cut, and the rest of
/// them is skipped.
struct LineLimits {
    std::size_t property = std::string::npos;
    std::size_t block = std::string::npos;
};

/// The limits of settings files. A capture's text has none.
inline constexpr LineLimits kFileLineLimits{999, 126};

/// What a text held beside the properties.
struct SettingsTextResult {
    /// Whether every line was within its limit and every property line was understood. The empty line that
    /// follows a final line feed is a line too, and no property.
    bool clean = true;
    /// Whether the text could be read to its end.
    bool readable = true;
    std::string blocks;  ///< for the records to read, each its own
};

/// Applies one property; false ends the property lines.
using ApplyProperty = std::function<bool(const std::string& name, const std::string& value)>;

/// Reads a text to its end. `source` names it in the log.
SettingsTextResult ReadSettingsText(std::istream& in, const LineLimits& limits, const std::string& source,
                                    const ApplyProperty& apply);

}  // namespace Zu::Wep::Trace
