#include "trace/format/SettingsText.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "trace/format/BlockReader.h"
#include "trace/format/StmPropertyTable.h"

namespace Zu::Wep::Trace {

namespace {

constexpr std::string_view kPackedBlockStart = "{type";

/// What ends a field of a property line.
constexpr std::string_view kFieldEnds{" =\r\n\t"};

std::string_view TakeField(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(kFieldEnds), rest.size()));
    const std::string_view field = rest.substr(0, rest.find_first_of(kFieldEnds));
    rest.remove_prefix(field.size());
    return field;
}

/// The first two fields of a line; empty for none.
PropertyLine SplitPropertyLine(std::string_view line) {
    PropertyLine result;
    std::string_view rest = line.substr(0, line.find('\0'));
    result.name = TakeField(rest);
    const std::string_view behindName = rest;
    result.value = TakeField(rest);
    result.between = behindName.substr(0, static_cast<std::size_t>(result.value.data() - behindName.data()));
    result.rest = rest;
    return result;
}

/// How much of a line counts when it is asked whether it is within its limit.
std::size_t LengthToLimit(std::string_view line) { return StripBlanks(line).size(); }

void TellZeroByte(TextReporter* reporter, std::size_t number, std::string_view line) {
    if (reporter == nullptr) {
        return;
    }
    if (const std::size_t zero = line.find('\0'); zero != std::string_view::npos) {
        reporter->OnZeroByte(number, zero);
    }
}

}  // namespace

void AppendPropertyLines(const StmProperties& properties, std::string& out) {
    for (const StmProperty& property : kStmProperties) {
        char text[256];
        std::snprintf(text, sizeof text, "%s = %d\n", property.name, NumberOf(properties, property));
        out += text;
    }
}

std::size_t UnfoldPackedBlock(std::string& out, char* line) {
    const std::size_t length = std::strlen(line);
    if (length == 0) {
        return 0;
    }
    out += line[0];
    out += '\n';
    // One character only: a CR goes and the brace before it stays (docs/use-case-blocks.md, "Packed form").
    line[length - 1] = '\0';
    std::size_t count = 2;
    char* state = nullptr;
    for (char* field = strtok_r(line + 1, ",", &state); field != nullptr; field = strtok_r(nullptr, ",", &state)) {
        out += field;
        out += '\n';
        ++count;
    }
    out += "}\n";
    return count;
}

SettingsText::SettingsText(std::string text, const LineLimits& limits, const ApplyProperty& apply,
                           TextReporter* reporter)
    : m_text(std::move(text)), m_limits(limits), m_reporter(reporter) {
    Line line;
    do {
        line = NextLine(m_limits.property);
    } while (TakeLine(line, apply) && !m_isAtEnd);
    if (m_unfolded.empty()) {
        TakeBlocks(line);
    } else {  // one-line blocks and blocks of lines are not mixed
        TellUnread();
        m_blocks.text = m_unfolded;
    }
}

/// A text that ends with a line feed has an empty line behind it.
SettingsText::Line SettingsText::NextLine(std::size_t limit) {
    const std::size_t end = m_text.find('\n', m_position);
    m_isAtEnd = end == std::string::npos;
    const std::string_view whole = std::string_view(m_text).substr(m_position, end - m_position);
    const Line line{m_position, std::min(whole.size(), limit), ++m_lineCount};
    m_position = m_isAtEnd ? m_text.size() : end + 1;
    if (whole.size() > limit && LengthToLimit(whole) > limit) {
        m_isClean = false;
        if (m_reporter != nullptr) {
            m_reporter->OnLineCut(line.number, whole.size(), limit);
        }
    }
    TellZeroByte(m_reporter, line.number, TextOf(line));
    return line;
}

/// False for the line that ends the properties.
bool SettingsText::TakeLine(const Line& line, const ApplyProperty& apply) {
    const std::string_view text = TextOf(line);
    if (text.starts_with(kPackedBlockStart)) {
        TakePacked(line);
        return true;
    }
    if (text.starts_with('{')) {
        TellEnd(line, PropertiesEnd::Block);
        return false;
    }
    const PropertyLine property = SplitPropertyLine(text);
    const bool hasValue = !property.value.empty();
    if (hasValue && apply(property.name, property.value)) {
        if (m_reporter != nullptr) {
            m_reporter->OnProperty(line.number, property);
        }
        EndFields(property);
        return true;
    }
    m_isClean = false;
    TellEnd(line, hasValue ? PropertiesEnd::UnknownKey : PropertiesEnd::NoValue);
    EndFields(property);
    return false;
}

/// A zero byte takes the place of the character behind each field: the line may be the first of the blocks, and records
/// read up to it (docs/settings-text.md).
void SettingsText::EndFields(const PropertyLine& line) {
    for (const std::string_view field : {line.name, line.value}) {
        const char* const end = line.rest.data() + line.rest.size();
        if (!field.empty() && field.data() + field.size() != end) {
            m_text[static_cast<std::size_t>(field.data() + field.size() - m_text.data())] = '\0';
        }
    }
}

void SettingsText::TakePacked(const Line& line) {
    if (m_reporter != nullptr) {
        m_reporter->OnPackedBlock(line.number, TextOf(line));
    }
    m_text[line.start + line.length] = '\0';  // in the place of the line feed, or of what was cut
    const std::size_t count = UnfoldPackedBlock(m_unfolded, m_text.data() + line.start);
    m_blocks.lines.insert(m_blocks.lines.end(), count, line.number);
}

/// Everything from the line that ended the properties on is for the records; what was cut is closed up.
void SettingsText::TakeBlocks(const Line& first) {
    std::size_t end = first.start + first.length;
    while (!m_isAtEnd) {
        m_text[end++] = '\n';
        const Line line = NextLine(m_limits.block);
        if (line.start != end) {
            std::memmove(m_text.data() + end, m_text.data() + line.start, line.length);
        }
        end += line.length;
    }
    m_text.resize(end);
    m_text += '\n';
    m_blocks = {std::string_view(m_text).substr(first.start), first.number};
}

void SettingsText::TellUnread() {
    while (m_reporter != nullptr && !m_isAtEnd) {
        const Line line = NextLine(std::string::npos);
        m_reporter->OnUnreadLine(line.number, TextOf(line));
    }
}

void SettingsText::TellEnd(const Line& line, PropertiesEnd why) {
    if (m_reporter != nullptr) {
        m_reporter->OnPropertiesEnd(line.number, why, TextOf(line));
    }
}

void ReadDeviceText(std::string_view text, const ApplyProperty& apply, TextReporter* reporter) {
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        TellZeroByte(reporter, number, line);
        const PropertyLine property = SplitPropertyLine(line);
        const bool isApplied = !property.value.empty() && apply(property.name, property.value);
        if (reporter == nullptr) {
            continue;
        }
        if (isApplied) {
            reporter->OnProperty(number, property);
        } else if (!property.name.empty() && property.value.empty()) {
            reporter->OnNoValue(number, property.name);
        }
    }
}

}  // namespace Zu::Wep::Trace
