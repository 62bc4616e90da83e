#include "stmdcm/reading/PropertyFindings.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "stmdcm/reading/ValueCheck.h"
#include "trace/format/BlockReader.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::string_view kPackedStart = "{type";

bool IsBlank(std::string_view line) { return StripBlanks(line).empty(); }

}  // namespace

PropertyFindings::PropertyFindings(TextKind kind, Place place, Findings& findings)
    : m_kind(kind), m_place(std::move(place)), m_findings(findings) {}

void PropertyFindings::OnLineCut(std::size_t line, std::size_t length, std::size_t limit) {
    Add(Kind("T-LINE-CUT"), line, fmt::format("the line has {} characters", length),
        fmt::format("cut to {} characters; loading gives false", limit));
}

void PropertyFindings::OnZeroByte(std::size_t line, std::size_t length) {
    Add(Kind("T-ZERO-BYTE"), line, "a zero byte stands in the line",
        fmt::format("the first {} of the line are read", Counted(length, "character")));
}

void PropertyFindings::OnProperty(std::size_t line, const PropertyLine& property) {
    const StmProperty* const row = FindStmProperty(property.name);
    const auto index = static_cast<std::size_t>(row - kStmProperties.data());
    std::size_t& setOnLine = m_setOnLine[index];
    if (setOnLine != 0) {
        Add(Kind("T-DUPLICATE"), line, fmt::format("{} was set on line {} already", property.name, setOnLine),
            "the last one counts");
    }
    setOnLine = line;
    m_fits[index] = true;
    for (Finding& finding : CheckValue(row->shape, property.name, std::string(property.value), m_place.AtLine(line))) {
        m_fits[index] = m_fits[index] && finding.kind != &Kind("T-NUMBER-WRAPPED");
        m_findings.Add(std::move(finding));
    }
    if (m_kind == TextKind::DeviceId) {
        return;
    }
    if (property.between.find('=') == std::string_view::npos) {
        Add(Kind("T-NO-EQUALS"), line, fmt::format("no \"=\" behind {}", property.name), "it is read all the same");
    }
    const auto extra = property.rest.find_first_not_of(" =\r\n\t");
    if (extra != std::string_view::npos) {
        Add(Kind("T-EXTRA-FIELD"), line,
            fmt::format("{} stands behind the value of {}", Quoted(property.rest.substr(extra)), property.name),
            fmt::format("{} counts, the rest of the line is ignored", Quoted(property.value)));
    }
}

void PropertyFindings::OnNoValue(std::size_t line, std::string_view name) {
    Add(Kind("D-NO-VALUE"), line, fmt::format("{} has no value", Quoted(name)), "the line is passed over");
}

void PropertyFindings::OnPackedBlock(std::size_t line, std::string_view text) {
    m_hasPacked = true;
    text = text.substr(0, text.find('\0'));
    if (text.ends_with('\r')) {
        Add(Kind("T-PACKED-CR"), line, "a CR stands behind the block",
            "it is cut off in place of the brace, which stays in the last value");
    } else if (!text.ends_with('}')) {
        Add(Kind("T-PACKED-END"), line, "the one-line block does not end in \"}\"",
            fmt::format("its last character {} is cut off all the same", Quoted(text.substr(text.size() - 1))));
    }
}

void PropertyFindings::OnPropertiesEnd(std::size_t line, PropertiesEnd why, std::string_view text) {
    m_end = {line, why, std::string(text.substr(0, text.find('\0')))};
}

void PropertyFindings::OnUnreadLine(std::size_t line, std::string_view text) {
    if (!IsBlank(text) && m_unread++ == 0) {
        m_firstUnread = line;
    }
}

void PropertyFindings::Finish(const BlockText& blocks) {
    if (m_kind == TextKind::DeviceId) {
        return;
    }
    if (m_hasPacked) {
        TellBehindPacked();
    } else if (m_end.line != 0) {
        TellInFrontOfBlocks(blocks);
    }
    TellUnset();
}

void PropertyFindings::TellBehindPacked() {
    if (m_end.line == 0) {
        return;
    }
    if (m_end.why == PropertiesEnd::Block) {
        Add(Kind("T-MIXED-BLOCKS"), m_end.line, "a block of lines stands behind one-line blocks",
            fmt::format("it and {} behind it are not read", Counted(m_unread, "line")));
        return;
    }
    TellWhyEnded(m_unread);
    if (m_unread > 0) {
        Add(Kind("T-PACKED-REST"), m_firstUnread,
            fmt::format("{} behind the one-line blocks", Counted(m_unread, "line")),
            "not read, because one-line blocks were");
    }
}

/// What the line that ended the properties says, and what stands between it and the first block.
void PropertyFindings::TellInFrontOfBlocks(const BlockText& blocks) {
    std::string_view rest = blocks.text;
    std::size_t text = 0;    // lines behind the end
    std::size_t unread = 0;  // those of them in front of the first block
    bool isInFront = true;
    for (std::size_t index = 0; !rest.empty(); ++index) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (index > 0 && line.starts_with(kPackedStart)) {
            Add(Kind("T-MIXED-BLOCKS"), blocks.NumberOf(index),
                "a one-line block stands where blocks of lines are read",
                "it counts as an opening line, its fields are not read");
        }
        isInFront = isInFront && !line.starts_with('{');
        if (index > 0 && !IsBlank(line)) {
            ++text;
            unread += isInFront ? 1 : 0;
        }
    }
    if (m_end.why != PropertiesEnd::Block) {
        TellWhyEnded(text);
    }
    if (unread > 0) {
        Add(Kind("T-NOT-READ"), m_end.line + 1, fmt::format("{} in front of the blocks", Counted(unread, "line")),
            fmt::format("not read, because the properties ended on line {}", m_end.line));
    }
}

/// `rest` is the number of lines of text behind the end.
void PropertyFindings::TellWhyEnded(std::size_t rest) {
    if (IsBlank(m_end.text) && rest == 0) {
        if (m_kind == TextKind::File) {
            Add(Kind("T-FINAL-LINE-FEED"), m_end.line, "the text ends with a line feed or blank lines",
                "loading gives false, though everything is applied");
        }
    } else if (IsBlank(m_end.text)) {
        Add(Kind("T-BLANK-LINE"), m_end.line, "a blank line", "the properties end here");
    } else if (m_end.why == PropertiesEnd::NoValue) {
        Add(Kind("T-NO-VALUE"), m_end.line, fmt::format("{} has no value", Quoted(m_end.text)),
            "the properties end here");
    } else {
        const std::string_view text = m_end.text;
        const std::size_t start = std::min(text.find_first_not_of(" =\r\n\t"), text.size());
        const std::string_view key = text.substr(start, text.find_first_of(" =\r\n\t", start) - start);
        Add(Kind("T-UNKNOWN-KEY"), m_end.line, fmt::format("{} is no property", Quoted(key)),
            "it is not set, and the properties end here");
    }
}

std::optional<Origin> PropertyFindings::OriginOf(std::size_t index) const {
    const std::size_t line = m_setOnLine[index];
    return Origin{m_place.AtLine(line), line == 0 || m_fits[index]};
}

std::size_t PropertyFindings::CountSet() const {
    return m_setOnLine.size() - static_cast<std::size_t>(std::count(m_setOnLine.begin(), m_setOnLine.end(), 0U));
}

void PropertyFindings::TellUnset() {
    constexpr std::size_t kMaxNames = 4;
    std::string names;
    std::size_t count = 0;
    for (std::size_t i = 0; i < kStmProperties.size(); ++i) {
        if (m_setOnLine[i] == 0 && count++ < kMaxNames) {
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

void PropertyFindings::Add(const FindingKind& kind, std::size_t line, std::string what, std::string effect) {
    m_findings.Add(kind, m_place.AtLine(line), std::move(what), std::move(effect));
}

}  // namespace stmdcm
