#include "stmdcm/reading/BlockFindings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "stmdcm/reading/ValueCheck.h"
#include "trace/format/BlockField.h"
#include "trace/usecase/CTUsecaseInfo.h"
#include "trace/usecase/PMIUsecaseInfo.h"
#include "trace/usecase/UsecaseInfo.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::size_t kTagLength = 3;

/// The text that a formula's tag number is read from.
std::string_view TagText(std::string_view formula) {
    const std::size_t colon = formula.find(':');
    return formula.substr(colon == std::string_view::npos ? 0 : colon + 1, kTagLength);
}

/// Whether the number behind the colon is there and ends within the characters that are looked at.
bool StatesTag(std::string_view formula) {
    const std::size_t colon = formula.find(':');
    if (colon == std::string_view::npos) {
        return false;
    }
    const std::string_view rest = formula.substr(colon + 1);
    const std::size_t digits = std::min(rest.find_first_not_of("0123456789"), rest.size());
    return digits > 0 && digits <= kTagLength;
}

/// What a fault is called, and in words.
std::pair<const FindingKind*, std::string> Describe(BlockFault fault, std::string_view text) {
    switch (fault) {
        case BlockFault::TextEnds:
            return {&Kind("U-UNCLOSED"), "the text ends before the block is closed"};
        case BlockFault::BlankLine:
            return {&Kind("U-BLANK-IN-BLOCK"), "a blank line before the block is closed"};
        case BlockFault::LineTooLong:
            return {&Kind("U-LINE-LENGTH"), fmt::format("the line has {} characters", text.size())};
        case BlockFault::NoEquals:
            break;
    }
    return {text.starts_with('{') ? &Kind("U-UNCLOSED") : &Kind("U-NO-EQUALS"),
            fmt::format("{} has no \"=\"", Quoted(text))};
}

/// By kind.
constexpr std::vector<std::string_view> (*kKeysOf[])() = {UsecaseInfo::Keys, CTUsecaseInfo::Keys, PMIUsecaseInfo::Keys};

}  // namespace

BlockFindings::BlockFindings(const BlockText& text, Place place, Findings& findings)
    : m_place(std::move(place)), m_findings(findings) {
    const auto lines = std::count(text.text.begin(), text.text.end(), '\n');
    m_lastLine = lines == 0 ? 0 : text.NumberOf(static_cast<std::size_t>(lines) - 1);
}

void BlockFindings::OnBlockOpened(UsecaseKind /*kind*/, std::size_t line, std::string_view /*text*/) {
    m_opener = line;
    m_isFirstLine = true;
    m_keys.clear();
    m_pending = {};
    m_faults.clear();
}

void BlockFindings::OnKey(UsecaseKind kind, std::size_t line, const BlockKey& key) {
    if (key.use == KeyUse::Counter) {
        TakeCounter(line, key);
    } else if (key.use == KeyUse::Type && !key.isInFormula) {
        if (!m_isFirstLine) {
            Add(Kind("U-LATE-TYPE"), line,
                fmt::format("{} is not the first line of its block", Quoted(fmt::format("type={}", key.value))),
                fmt::format("ignored, the block is read as {}", NamesOf(kind).name));
        }
    } else if (key.use == KeyUse::Field) {
        TakeField(line, key);
    } else {
        const bool hasBlank = key.key.find_first_of(" \t") != std::string_view::npos;
        Add(Kind("U-UNKNOWN-KEY"), line,
            fmt::format("{} is no key of {}{}", Quoted(key.key), NamesOf(kind).name, hasBlank ? ", blanks count" : ""),
            "the line is ignored");
    }
    m_isFirstLine = false;
}

void BlockFindings::TakeCounter(std::size_t line, const BlockKey& key) {
    const std::string number(key.key.substr(1));
    TellValue(ValueShape::Unsigned, "the number of a counter", number, line);
    const std::string name = fmt::format("#{}", BlockNumber(number));
    if (const auto [known, isNew] = m_keys.emplace(name, line); !isNew) {
        Add(Kind("U-COUNTER-TWICE"), line, fmt::format("counter {} stands on line {} already", name, known->second),
            "both are kept");
    }
    TellText(name, key.value, line);
}

void BlockFindings::TakeField(std::size_t line, const BlockKey& key) {
    Trail& trail = key.isInFormula ? m_formulaKeys : m_keys;
    if (const auto [known, isNew] = trail.emplace(key.key, line); !isNew) {
        Add(Kind("U-KEY-TWICE"), line, fmt::format("{} was set on line {} already", key.key, known->second),
            "the last one counts");
    }
    TellValue(key.shape, key.key, std::string(key.value), line);
    if (key.shape == ValueShape::Text) {
        TellText(key.key, key.value, line);
    }
    if (key.isInFormula && key.key == "formula") {
        m_formula = key.value;
    }
}

void BlockFindings::TellValue(ValueShape shape, std::string_view key, const std::string& value, std::size_t line) {
    for (Finding& finding : CheckValue(shape, key, value, m_place.AtLine(line))) {
        m_pending.Add(std::move(finding));
    }
}

/// What becomes of a text when the configuration is saved.
void BlockFindings::TellText(std::string_view key, std::string_view value, std::size_t line) {
    const std::size_t room = kMaxWrittenLine - std::string_view("=\n").size() - key.size();
    if (value.size() > room) {
        Add(Kind("U-CUT-ON-SAVE"), line, fmt::format("the value of {} has {} characters", key, value.size()),
            fmt::format("read whole, but cut to {} characters when it is saved", room));
    }
}

void BlockFindings::OnFormulaOpened(std::size_t line) {
    m_formulaOpener = line;
    m_formulaKeys.clear();
    m_formula.clear();
    m_isFirstLine = false;
}

void BlockFindings::OnFormulaSkipped(std::size_t line, std::string_view text) {
    Add(Kind("U-FORMULA-LINE"), line, fmt::format("{} has no \"=\"", Quoted(text)), "the line is skipped");
}

void BlockFindings::OnFormulaEnded(std::size_t line, FormulaEnd how) {
    if (how == FormulaEnd::Empty) {
        m_ends.insert(line);
        AddFault(Kind("U-FORMULA-EMPTY"), m_formulaOpener, "no formula stands behind \"/$\"",
                 "the block counts as complete without its \"}\"");
        return;
    }
    if (how == FormulaEnd::Open) {
        AddFault(Kind("U-FORMULA-OPEN"), m_formulaOpener, "the formula is not closed by \"$/\"",
                 fmt::format("it runs on to line {}", line));
    }
    if (!StatesTag(m_formula)) {
        Add(Kind("U-FORMULA-TAG"), line, fmt::format("the formula {} states no tag number", Quoted(m_formula)),
            fmt::format("the tag number is {}, read from {}",
                        static_cast<std::uint32_t>(BlockNumber(TagText(m_formula))), Quoted(TagText(m_formula))));
    }
    TellUnset("formula", m_formulaOpener, m_formulaKeys, UsecaseInfo::FormulaKeys());
}

void BlockFindings::OnBlockRead(UsecaseKind kind, std::size_t /*line*/) {
    if (!m_keys.empty() || m_formulaOpener > m_opener) {  // an empty block is told as such
        TellUnset("block", m_opener, m_keys, kKeysOf[static_cast<std::size_t>(kind)]());
    }
    KindReading& reading = m_readings[static_cast<std::size_t>(kind)];
    reading.openers.push_back(m_opener);
    reading.met.insert(m_opener);
    m_findings.Add(m_pending);
    TellFaults();
}

/// Nothing of the block is kept, and nothing behind it is read.
void BlockFindings::OnBlockDropped(UsecaseKind kind, std::size_t line, BlockFault fault, std::string_view text) {
    m_readings[static_cast<std::size_t>(kind)].met.insert(m_opener);
    // The empty line behind a final line feed is the end of the text to a person.
    if (fault == BlockFault::BlankLine && line == m_lastLine) {
        fault = BlockFault::TextEnds;
    }
    auto [called, words] = Describe(fault, text);
    AddFault(*called, fault == BlockFault::TextEnds ? m_opener : line, std::move(words),
             fmt::format("the {0} use case from line {1} is dropped, and no {0} use case behind it is read",
                         NamesOf(kind).name, m_opener));
    TellFaults();
}

void BlockFindings::OnBlocksEnd(UsecaseKind kind, std::size_t line, BlocksEnd why) {
    if (why == BlocksEnd::BlankLine) {
        m_readings[static_cast<std::size_t>(kind)].blankEnd = line;
    }
}

void BlockFindings::TellUnset(const char* what, std::size_t line, const Trail& trail,
                              const std::vector<std::string_view>& keys) {
    std::vector<std::string_view> unset;
    std::copy_if(keys.begin(), keys.end(), std::back_inserter(unset), [&](auto key) { return !trail.contains(key); });
    if (!unset.empty()) {
        Add(Kind("U-NOT-SET"), line, fmt::format("the {} does not set {}", what, fmt::join(unset, ", ")),
            "each has its default");
    }
}

void BlockFindings::TellFaults() {
    for (Finding& fault : m_faults) {
        m_findings.Add(std::move(fault));
    }
    m_faults.clear();
}

void BlockFindings::Add(const FindingKind& kind, std::size_t line, std::string what, std::string effect) {
    m_pending.Add(kind, m_place.AtLine(line), std::move(what), std::move(effect));
}

void BlockFindings::AddFault(const FindingKind& kind, std::size_t line, std::string what, std::string effect) {
    m_faults.push_back({&kind, m_place.AtLine(line), std::move(what), std::move(effect)});
}

}  // namespace stmdcm
