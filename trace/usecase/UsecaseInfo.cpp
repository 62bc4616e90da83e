#include "trace/usecase/UsecaseInfo.h"

namespace Zu::Wep::Trace {
namespace {

constexpr BlockField<FormulaInfo> kFormulaFieldTable[] = {
    {"name", &FormulaInfo::name},
    {"formula", &FormulaInfo::formula},
    {"unit", &FormulaInfo::unit},
    {"ofmask", &FormulaInfo::ofmask},
};
constexpr std::span<const BlockField<FormulaInfo>> kFormulaFields = kFormulaFieldTable;

constexpr std::size_t kUsualCounters = 4;

// The number in the three characters behind the first ":", or in the first three characters where there is none.
std::uint32_t TagNumber(std::string_view formula) {
    const std::size_t colon = formula.find(':');
    const std::size_t start = colon == std::string_view::npos ? 0 : colon + 1;
    return static_cast<std::uint32_t>(BlockNumber(formula.substr(start, 3)));
}

bool AcceptsFirstLine(std::string_view line) {
    return !line.starts_with("type") || line == NamesOf(UsecaseInfo::kKind).typeLine;
}

void WriteFormula(std::string& out, const FormulaInfo& formula, BlockWriteReporter& reporter) {
    AppendBlockLine(out, kFormulaOpen);
    WriteFields(out, formula, kFormulaFields, reporter);
    AppendBlockLine(out, kFormulaClose);
}

template <class Item>
Item* ItemAt(std::vector<Item>& items, unsigned int index) {
    return index < items.size() ? &items[index] : nullptr;
}

}  // namespace

void UsecaseInfo::AddCounter(const _CounterLineInfo* counter) { m_counters.push_back(*counter); }

void UsecaseInfo::AddFormula(const char* name, const char* formula, const char* unit, unsigned int ofmask) {
    m_formulas.push_back({name, formula, unit, 0, ofmask});
}

unsigned int UsecaseInfo::GetNumCounters() const { return static_cast<unsigned int>(m_counters.size()); }

unsigned int UsecaseInfo::GetNumFormulars() const { return static_cast<unsigned int>(m_formulas.size()); }

_CounterLineInfo* UsecaseInfo::GetCounterInfo(unsigned int index) { return ItemAt(m_counters, index); }

FormulaInfo* UsecaseInfo::GetFormula(unsigned int index) { return ItemAt(m_formulas, index); }

std::vector<std::string_view> UsecaseInfo::FormulaKeys() { return KeysOf(kFormulaFields); }

void UsecaseInfo::Export(std::string& out, BlockWriteReporter& reporter) const {
    AppendBlockLine(out, kBlockOpen);
    WriteFields(out, *this, Fields(), reporter);
    for (const _CounterLineInfo& counter : m_counters) {
        std::string key(1, '#');
        key += std::to_string(WrittenValue(counter.number));
        AppendKeyLine(out, key, counter.text, reporter);
    }
    for (const FormulaInfo& formula : m_formulas) {
        WriteFormula(out, formula, reporter);
    }
    AppendBlockLine(out, kBlockClose);
}

int UsecaseInfo::Import(std::string_view line, BlockLines& in) {
    return ReadBlock(line, in, AcceptsFirstLine, [&](std::string_view& current) {
        return current == kFormulaOpen ? ReadFormula(current, in) : ToLineResult(StoreKeyLine(current, in));
    });
}

int UsecaseInfo::ProccessLine(const char* line, bool inFormula, std::istringstream& in) {
    BlockLines lines(kKind, in);
    std::string_view current = line;
    return inFormula ? ReadFormulaLines(current, lines) : StoreKeyLine(current, lines);
}

int UsecaseInfo::StoreKeyLine(std::string_view line, const BlockLines& in) {
    KeyLine keyLine;
    const int result = SplitKeyLine(line, keyLine);
    if (result == 0 && keyLine.key.starts_with('#')) {
        const auto number = static_cast<std::uint32_t>(BlockNumber(keyLine.key.substr(1)));
        if (m_counters.empty()) {
            m_counters.reserve(kUsualCounters);
        }
        m_counters.push_back({number, std::string(keyLine.value)});
        in.Tell(&TextReporter::OnKey, BlockKey{keyLine.key, keyLine.value, KeyUse::Counter});
    } else if (result == 0) {
        StoreField(*this, Fields(), keyLine, in);
    }
    return result;
}

/// `line` is the one that opens the formula.
LineResult UsecaseInfo::ReadFormula(std::string_view& line, BlockLines& in) {
    in.Tell(&TextReporter::OnFormulaOpened);
    if (!in.Next(line)) {
        in.Tell(&TextReporter::OnFormulaEnded, FormulaEnd::Empty);
        return LineResult::BlockDone;  // docs/use-case-blocks.md: the block counts as complete
    }
    return ToLineResult(ReadFormulaLines(line, in));
}

/// `line` is the first behind the one that opens the formula. Only "$/", a blank line or the end of the text ends it: a
/// "}" has no "=" and is skipped (docs/use-case-blocks.md).
int UsecaseInfo::ReadFormulaLines(std::string_view& line, BlockLines& in) {
    FormulaInfo formula;
    constexpr bool kIsInFormula = true;
    int result = StoreLine(formula, kFormulaFields, line, in, kIsInFormula);
    if (result != 0) {
        return result;
    }
    bool isOpen = true;
    while (isOpen && in.Next(line)) {
        isOpen = line != kFormulaClose;
        result = isOpen ? StoreLine(formula, kFormulaFields, line, in, kIsInFormula) : 0;
        if (result < 0) {
            return result;
        }
        if (result > 0) {
            in.Tell(&TextReporter::OnFormulaSkipped, line);
        }
    }
    in.Tell(&TextReporter::OnFormulaEnded, isOpen ? FormulaEnd::Open : FormulaEnd::Closed);
    formula.tagNumber = TagNumber(formula.formula);
    m_formulas.push_back(std::move(formula));
    return 0;
}

}  // namespace Zu::Wep::Trace
