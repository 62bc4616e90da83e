#include "tool/check/UsecaseReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "trace/usecase/BlockField.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::size_t kTagLength = 3;

/// The text that a formula's tag number is read from.
std::string TagText(const std::string& formula) {
    const std::size_t colon = formula.find(':');
    return formula.substr(colon == std::string::npos ? 0 : colon + 1, kTagLength);
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// Whether the number behind the colon is there and ends within the characters that are looked at.
bool StatesTag(const std::string& formula) {
    const std::size_t colon = formula.find(':');
    if (colon == std::string::npos) {
        return false;
    }
    const std::string rest = formula.substr(colon + 1, kTagLength + 1);
    const auto digits = std::find_if_not(rest.begin(), rest.end(), IsDigit) - rest.begin();
    return digits > 0 && static_cast<std::size_t>(digits) <= kTagLength;
}

}  // namespace

UsecaseReader::UsecaseReader(const KindRules& rules, const BlockText& text, Place place)
    : m_rules(rules), m_text(text), m_place(std::move(place)), m_in(text.Stream()) {}

KindReading UsecaseReader::Run() {
    std::string line;
    do {
        const int result = ReadOne(line);
        if (result < 0) {
            DropBlock();
        }
        m_reading.findings.Add(m_findings);
        for (const Finding& fault : m_faults) {
            m_reading.findings.Add(fault);
        }
        if (result < 0) {
            return std::move(m_reading);
        }
        if (result == 0) {
            m_reading.openers.insert(*m_opener);
            m_reading.usecases.push_back(std::move(m_usecase));
        }
    } while (ReadBlockLine(line, m_in));
    if (!m_in.fail()) {
        m_reading.blankEnd = Index();
    }
    return std::move(m_reading);
}

int UsecaseReader::ReadOne(const std::string& line) {
    m_usecase = {};
    m_opener.reset();
    m_keys.clear();
    m_findings = {};
    m_faults.clear();
    const int result = ReadBlock(
        line.c_str(), m_in, [this](const std::string& first) { return Accepts(first); },
        [this](std::string& current) { return Process(current); });
    if (!m_opener) {  // no line between the braces; at the end of the text none was read behind the first one
        m_opener = Index() - (m_in.fail() ? 0 : 1);
    }
    if (result <= 0) {
        m_usecase.line = m_text.Lines()[*m_opener].number;
    }
    return result;
}

bool UsecaseReader::Accepts(const std::string& first) {
    m_opener = Index() - 1;
    m_isFirstLine = true;
    return first == m_rules.typeLine || (m_rules.mayOmitType && !first.starts_with("type"));
}

LineResult UsecaseReader::Process(std::string& line) {
    const LineResult result =
        m_rules.hasCountersAndFormulas && line == FormulaOpen ? ReadFormula(line) : TakeKeyLine(line);
    m_isFirstLine = false;
    return result;
}

LineResult UsecaseReader::TakeKeyLine(const std::string& line) {
    KeyLine keyLine;
    const int result = SplitKeyLine(line.c_str(), keyLine);
    if (result != 0) {
        return BadLine(line, result);
    }
    if (keyLine.key == "type") {
        if (!m_isFirstLine) {
            Add(Kind("U-LATE-TYPE"), fmt::format("{} is not the first line of its block", Quoted(line)),
                fmt::format("ignored, the block is read as {}", m_rules.name));
        }
    } else if (m_rules.hasCountersAndFormulas && keyLine.key.starts_with('#')) {
        TakeCounter(keyLine);
    } else {
        TakeField(m_rules.fields, keyLine, m_keys);
    }
    return LineResult::Next;
}

void UsecaseReader::TakeCounter(const KeyLine& keyLine) {
    const std::string number(keyLine.key.substr(1));
    for (Finding& finding :
         CheckValue(ValueRule::Unsigned, "the number of a counter", number, m_place.AtLine(LineNumber()))) {
        m_findings.Add(std::move(finding));
    }
    const std::string key = fmt::format("#{}", BlockNumber(number.c_str()));
    if (const auto [known, isNew] = m_keys.emplace(key, LineNumber()); !isNew) {
        Add(Kind("U-COUNTER-TWICE"), fmt::format("counter {} stands on line {} already", key, known->second),
            "both are kept");
    }
    CheckText(key, keyLine.value);
    ++m_usecase.counters;
}

LineResult UsecaseReader::ReadFormula(std::string& line) {
    const std::size_t open = LineNumber();
    if (!ReadBlockLine(line, m_in)) {
        AddFault(Kind("U-FORMULA-EMPTY"), open, "no formula stands behind \"/$\"",
                 "the block counts as complete without its \"}\"");
        return LineResult::BlockDone;
    }
    KeyLine first;
    const int result = SplitKeyLine(line.c_str(), first);
    if (result != 0) {
        return BadLine(line, result);
    }
    const LineResult end = TakeFormulaLines(first);
    if (end == LineResult::BlockDone) {
        AddFault(Kind("U-FORMULA-OPEN"), open, "the formula is not closed by \"$/\"",
                 fmt::format("it runs on to line {}", LineNumber()));
    }
    if (end != LineResult::Bad) {
        AddFormula();
        return LineResult::Next;
    }
    return end;
}

/// `BlockDone` when the formula is not closed.
LineResult UsecaseReader::TakeFormulaLines(const KeyLine& first) {
    Trail keys;
    m_formula.clear();
    TakeField(kFormulaFields, first, keys);
    for (std::string line; ReadBlockLine(line, m_in);) {
        if (line == FormulaClose) {
            return LineResult::Next;
        }
        KeyLine keyLine;
        const int result = SplitKeyLine(line.c_str(), keyLine);
        if (result < 0) {
            return BadLine(line, result);
        }
        if (result > 0) {
            Add(Kind("U-FORMULA-LINE"), fmt::format("{} has no \"=\"", Quoted(line)), "the line is skipped");
        } else {
            TakeField(kFormulaFields, keyLine, keys);
        }
    }
    return LineResult::BlockDone;
}

void UsecaseReader::AddFormula() {
    const auto tag = static_cast<std::uint32_t>(BlockNumber(TagText(m_formula).c_str()));
    m_usecase.tags.push_back(tag);
    if (!StatesTag(m_formula)) {
        Add(Kind("U-FORMULA-TAG"), fmt::format("the formula {} states no tag number", Quoted(m_formula)),
            fmt::format("the tag number is {}, read from {}", tag, Quoted(TagText(m_formula))));
    }
}

void UsecaseReader::TakeField(std::span<const FieldRule> fields, const KeyLine& keyLine, Trail& trail) {
    const auto field =
        std::find_if(fields.begin(), fields.end(), [&](const FieldRule& each) { return each.key == keyLine.key; });
    if (field == fields.end()) {
        const bool hasBlank = keyLine.key.find_first_of(" \t") != std::string_view::npos;
        Add(Kind("U-UNKNOWN-KEY"),
            fmt::format("{} is no key of {}{}", Quoted(keyLine.key), m_rules.name, hasBlank ? ", blanks count" : ""),
            "the line is ignored");
        return;
    }
    if (const auto [known, isNew] = trail.emplace(keyLine.key, LineNumber()); !isNew) {
        Add(Kind("U-KEY-TWICE"), fmt::format("{} was set on line {} already", keyLine.key, known->second),
            "the last one counts");
    }
    const std::string value = keyLine.value;
    for (Finding& finding : CheckValue(field->rule, keyLine.key, value, m_place.AtLine(LineNumber()))) {
        m_findings.Add(std::move(finding));
    }
    if (field->rule == ValueRule::Text) {
        CheckText(keyLine.key, value);
    }
    StoreField(*field, value);
}

void UsecaseReader::StoreField(const FieldRule& field, const std::string& value) {
    switch (field.role) {
        case FieldRole::Name:
            m_usecase.name = value;
            break;
        case FieldRole::Module:
            m_usecase.module = static_cast<std::uint32_t>(BlockNumber(value.c_str()));
            break;
        case FieldRole::Job:
            m_usecase.job = BlockNumber(value.c_str());
            break;
        case FieldRole::Formula:
            m_formula = value;
            break;
        case FieldRole::Other:
            break;
    }
}

/// What becomes of a text when the configuration is saved.
void UsecaseReader::CheckText(std::string_view key, const std::string& value) {
    const std::size_t room = MaxWrittenLine - std::string_view("=\n").size() - key.size();
    if (value.size() > room) {
        Add(Kind("U-CUT-ON-SAVE"), fmt::format("the value of {} has {} characters", key, value.size()),
            fmt::format("read whole, but cut to {} characters when it is saved", room));
    }
}

LineResult UsecaseReader::BadLine(const std::string& line, int result) {
    const FindingKind& kind = result < 0              ? Kind("U-LINE-LENGTH")
                              : line.starts_with('{') ? Kind("U-UNCLOSED")
                                                      : Kind("U-NO-EQUALS");
    AddFault(kind, LineNumber(),
             result < 0 ? fmt::format("the line has {} characters", line.size())
                        : fmt::format("{} has no \"=\"", Quoted(line)),
             "");
    return LineResult::Bad;
}

/// The block is bad: nothing of it is kept, and nothing behind it is read.
void UsecaseReader::DropBlock() {
    m_findings = {};
    m_reading.openers.insert(*m_opener);
    const bool isTold = !m_faults.empty() && m_faults.back().effect.empty();
    const bool isLastLine = Index() + 1 == m_text.Lines().size();  // the empty one behind a final line feed, too
    if (!isTold && (m_in.fail() || isLastLine)) {
        AddFault(Kind("U-UNCLOSED"), m_usecase.line, "the text ends before the block is closed", "");
    } else if (!isTold) {
        AddFault(Kind("U-BLANK-IN-BLOCK"), LineNumber(), "a blank line before the block is closed", "");
    }
    m_faults.back().effect =
        fmt::format("the {0} use case from line {1} is dropped, and no {0} use case behind it is read", m_rules.name,
                    m_usecase.line);
}

void UsecaseReader::Add(const FindingKind& kind, std::string what, std::string effect) {
    m_findings.Add(kind, m_place.AtLine(LineNumber()), std::move(what), std::move(effect));
}

void UsecaseReader::AddFault(const FindingKind& kind, std::size_t line, std::string what, std::string effect) {
    m_faults.push_back({&kind, m_place.AtLine(line), std::move(what), std::move(effect)});
}

}  // namespace stmdcm
