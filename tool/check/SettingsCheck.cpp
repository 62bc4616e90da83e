#include "tool/check/SettingsCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tool/check/ValueCheck.h"
#include "trace/usecase/BlockReader.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::string_view kFieldEnds{" =\r\n\t"};
constexpr std::string_view kPackedStart = "{type";

/// The lines as a reader gets them: a text that ends with a line feed has an empty one behind it.
std::vector<std::string_view> SplitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    lines.push_back(text);
    return lines;
}

std::vector<std::string_view> SplitFields(std::string_view line, std::string_view ends) {
    std::vector<std::string_view> fields;
    line = line.substr(0, line.find('\0'));
    for (auto start = line.find_first_not_of(ends); start != std::string_view::npos;
         start = line.find_first_not_of(ends)) {
        line.remove_prefix(start);
        fields.push_back(line.substr(0, line.find_first_of(ends)));
        line.remove_prefix(fields.back().size());
    }
    return fields;
}

bool IsBlank(std::string_view line) { return line.find_first_not_of(TrailingBlanks) == std::string_view::npos; }

ValueRule RuleOf(const StmProperty& property) {
    switch (property.conversion) {
        case TextConversion::Integer:
            return ValueRule::Signed;
        case TextConversion::Clock:
            return ValueRule::Clock;
        case TextConversion::Flag:
            return ValueRule::Flag;
        case TextConversion::NumericFlag:
            break;
    }
    return ValueRule::NumericFlag;
}

}  // namespace

SettingsCheck::SettingsCheck(SettingsKind kind, Place place, Findings& findings, SettingsModel& model)
    : m_kind(kind),
      m_place(std::move(place)),
      m_findings(findings),
      m_model(model),
      m_limits(kind == SettingsKind::File ? kFileLineLimits : LineLimits{}) {}

void SettingsCheck::Run(std::string_view text) {
    m_lines = SplitLines(text);
    if (m_kind == SettingsKind::DeviceId) {
        RunDeviceId();
        return;
    }
    while (m_end < m_lines.size() && TakeLine(m_end)) {
        ++m_end;
    }
    TellEnd();
    if (m_model.blocks.empty()) {
        TakeBlocks();
    }
    TellUnset();
}

void SettingsCheck::RunDeviceId() {
    for (std::size_t index = 0; index < m_lines.size(); ++index) {
        const auto fields = SplitFields(Limited(index, m_limits.property), kFieldEnds);
        if (fields.size() == 1) {
            Add(Kind("D-NO-VALUE"), index, fmt::format("{} has no value", Quoted(fields[0])),
                "the line is passed over");
        } else if (fields.size() > 1) {
            Apply(index, fields[0], fields[1]);
        }
    }
}

/// False for the line that ends the properties.
bool SettingsCheck::TakeLine(std::size_t index) {
    const std::string_view line = Limited(index, m_limits.property);
    if (line.starts_with(kPackedStart)) {
        TakePacked(index);
        return true;
    }
    return !line.starts_with('{') && TakeProperty(index);
}

bool SettingsCheck::TakeProperty(std::size_t index) {
    const std::string_view line = m_lines[index].substr(0, m_limits.property);
    const auto fields = SplitFields(line, kFieldEnds);
    if (fields.size() < 2 || !Apply(index, fields[0], fields[1])) {
        m_model.clean = false;
        return false;
    }
    const auto between = std::string_view(fields[0].end(), fields[1].begin());
    if (between.find('=') == std::string_view::npos) {
        Add(Kind("T-NO-EQUALS"), index, fmt::format("no \"=\" behind {}", fields[0]), "it is read all the same");
    }
    if (fields.size() > 2) {
        Add(Kind("T-EXTRA-FIELD"), index, fmt::format("{} stands behind the value of {}", Quoted(fields[2]), fields[0]),
            fmt::format("{} counts, the rest of the line is ignored", Quoted(fields[1])));
    }
    return true;
}

/// False when `key` is no property.
bool SettingsCheck::Apply(std::size_t index, std::string_view key, std::string_view value) {
    const auto* property = std::find_if(kStmProperties.begin(), kStmProperties.end(),
                                        [key](const StmProperty& each) { return key == each.name; });
    if (property == kStmProperties.end()) {
        return false;
    }
    std::size_t& line = m_model.setOnLine[static_cast<std::size_t>(property - kStmProperties.begin())];
    if (line != 0) {
        Add(Kind("T-DUPLICATE"), index, fmt::format("{} was set on line {} already", key, line), "the last one counts");
    }
    line = index + 1;
    SetFromText(m_model.properties, *property, std::string(value));
    for (Finding& finding : CheckValue(RuleOf(*property), key, std::string(value), m_place.AtLine(index + 1))) {
        m_findings.Add(std::move(finding));
    }
    return true;
}

void SettingsCheck::TakePacked(std::size_t index) {
    std::string_view line = m_lines[index].substr(0, m_limits.property);
    line = line.substr(0, line.find('\0'));
    const std::string_view content = line.substr(1, line.size() - 2);
    if (line.ends_with('\r')) {
        Add(Kind("T-PACKED-CR"), index, "a CR stands behind the block",
            "it is cut off in place of the brace, which stays in the last value");
    } else if (!line.ends_with('}')) {
        Add(Kind("T-PACKED-END"), index, "the one-line block does not end in \"}\"",
            fmt::format("its last character {} is cut off all the same", Quoted(line.substr(line.size() - 1))));
    }
    m_model.blocks.push_back({index + 1, line.substr(0, 1)});
    for (const std::string_view field : SplitFields(content, ",")) {
        m_model.blocks.push_back({index + 1, field});
    }
    m_model.blocks.push_back({index + 1, "}"});
}

/// Everything from the line that ended the properties on is for the use cases.
void SettingsCheck::TakeBlocks() {
    for (std::size_t index = m_end; index < m_lines.size(); ++index) {
        const bool isTold = index == m_end;
        const std::string_view line =
            isTold ? m_lines[index].substr(0, m_limits.property) : Limited(index, m_limits.block);
        m_model.blocks.push_back({index + 1, line});
        if (line.starts_with(kPackedStart)) {
            Add(Kind("T-MIXED-BLOCKS"), index, "a one-line block stands where blocks of lines are read",
                "it counts as an opening line, its fields are not read");
        }
    }
}

void SettingsCheck::TellEnd() {
    if (m_end == m_lines.size()) {
        return;
    }
    const std::size_t rest = CountText(m_end + 1, m_lines.size());
    if (TellWhyEnded(rest) && !m_model.blocks.empty() && rest > 0) {
        Add(Kind("T-PACKED-REST"), m_end + 1, fmt::format("{} behind the one-line blocks", Counted(rest, "line")),
            "not read, because one-line blocks were");
    } else if (m_model.blocks.empty()) {
        TellUnreadLines();
    }
}

/// False when no further word is needed about the lines behind.
bool SettingsCheck::TellWhyEnded(std::size_t rest) {
    const std::string_view line = m_lines[m_end].substr(0, m_limits.property);
    const auto fields = SplitFields(line, kFieldEnds);
    if (line.starts_with('{')) {
        if (!m_model.blocks.empty()) {
            Add(Kind("T-MIXED-BLOCKS"), m_end, "a block of lines stands behind one-line blocks",
                fmt::format("it and {} behind it are not read", Counted(rest, "line")));
        }
        return false;
    }
    if (IsBlank(line) && rest == 0) {
        if (m_kind == SettingsKind::File) {
            Add(Kind("T-FINAL-LINE-FEED"), m_end, "the text ends with a line feed or blank lines",
                "loading gives false, though everything is applied");
        }
        return false;
    }
    if (IsBlank(line)) {
        Add(Kind("T-BLANK-LINE"), m_end, "a blank line", "the properties end here");
    } else if (fields.size() < 2) {
        Add(Kind("T-NO-VALUE"), m_end, fmt::format("{} has no value", Quoted(line)), "the properties end here");
    } else {
        Add(Kind("T-UNKNOWN-KEY"), m_end, fmt::format("{} is no property", Quoted(fields[0])),
            "it is not set, and the properties end here");
    }
    return true;
}

/// What stands between the end of the properties and the first block.
void SettingsCheck::TellUnreadLines() {
    std::size_t end = m_end;
    while (end < m_lines.size() && !m_lines[end].starts_with('{')) {
        ++end;
    }
    const std::size_t lost = CountText(m_end + 1, end);
    if (lost > 0) {
        Add(Kind("T-NOT-READ"), m_end + 1, fmt::format("{} in front of the blocks", Counted(lost, "line")),
            fmt::format("not read, because the properties ended on line {}", m_end + 1));
    }
}

void SettingsCheck::TellUnset() {
    constexpr std::size_t kMaxNames = 4;
    std::string names;
    std::size_t count = 0;
    for (std::size_t i = 0; i < kStmProperties.size(); ++i) {
        if (m_model.setOnLine[i] == 0 && count++ < kMaxNames) {
            names += fmt::format("{}{}", names.empty() ? "" : ", ", kStmProperties[i].name);
        }
    }
    if (count > 0) {
        m_findings.Add(Kind("T-NOT-SET"), m_place,
                       fmt::format("{} of {} properties are not set: {}{}", count, kStmProperties.size(), names,
                                   count > kMaxNames ? ", ..." : ""),
                       "each keeps the value that the reader has");
    }
}

/// The line as far as it is read. Tells what is lost of it.
std::string_view SettingsCheck::Limited(std::size_t index, std::size_t limit) {
    const std::string_view line = m_lines[index].substr(0, limit);
    const std::size_t length = m_lines[index].find_last_not_of(TrailingBlanks) + 1;
    if (length > limit) {
        m_model.clean = false;
        Add(Kind("T-LINE-CUT"), index, fmt::format("the line has {} characters", length),
            fmt::format("cut to {} characters; loading gives false", limit));
    }
    if (const std::size_t zero = line.find('\0'); zero != std::string_view::npos) {
        Add(Kind("T-ZERO-BYTE"), index, "a zero byte stands in the line",
            fmt::format("the first {} of the line are read", Counted(zero, "character")));
    }
    return line;
}

std::size_t SettingsCheck::CountText(std::size_t begin, std::size_t end) const {
    std::size_t count = 0;
    for (std::size_t index = begin; index < end; ++index) {
        count += IsBlank(m_lines[index]) ? 0 : 1;
    }
    return count;
}

void SettingsCheck::Add(const FindingKind& kind, std::size_t index, std::string what, std::string effect) {
    m_findings.Add(kind, m_place.AtLine(index + 1), std::move(what), std::move(effect));
}

}  // namespace stmdcm
