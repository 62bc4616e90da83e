#include "trace/usecase/UsecaseInfo.h"

#include "trace/usecase/BlockField.h"

namespace Zu::Wep::Trace {
namespace {

constexpr BlockField<FormulaInfo> FormulaFieldTable[] = {
    {"name", &FormulaInfo::name},
    {"formula", &FormulaInfo::formula},
    {"unit", &FormulaInfo::unit},
    {"ofmask", &FormulaInfo::ofmask},
};
constexpr std::span<const BlockField<FormulaInfo>> FormulaFields = FormulaFieldTable;

// The number in the three characters behind the first ":", or in the first three characters where there is none.
std::uint32_t TagNumber(const std::string& formula) {
    const std::size_t colon = formula.find(':');
    const std::size_t start = colon == std::string::npos ? 0 : colon + 1;
    return static_cast<std::uint32_t>(BlockNumber(formula.substr(start, 3).c_str()));
}

bool AcceptsFirstLine(std::string_view line) { return !line.starts_with("type") || line == "type=SC"; }

void WriteFormula(std::string& out, const FormulaInfo& formula) {
    AppendBlockLine(out, FormulaOpen);
    WriteFields(out, formula, FormulaFields);
    AppendBlockLine(out, FormulaClose);
}

template <class Item>
Item* ItemAt(std::vector<Item>& items, unsigned int index) {
    return index < items.size() ? &items[index] : nullptr;
}

}  // namespace

UsecaseInfo::UsecaseInfo() = default;

UsecaseInfo::~UsecaseInfo() = default;

UsecaseInfo& UsecaseInfo::operator=(const UsecaseInfo& other) {
    // Copies first: the source may be this object, whose lists then double as any other's would.
    const std::vector<_CounterLineInfo> counters = other.m_counters;
    const std::vector<FormulaInfo> formulas = other.m_formulas;
    m_moduleId = other.m_moduleId;
    m_moduleName = other.m_moduleName;
    m_sampleWindow = other.m_sampleWindow;
    m_jobNum = other.m_jobNum;
    m_suppress = other.m_suppress;
    m_counters.insert(m_counters.end(), counters.begin(), counters.end());
    m_formulas.insert(m_formulas.end(), formulas.begin(), formulas.end());
    return *this;
}

void UsecaseInfo::CleanUp() {
    m_moduleId = 0;
    m_moduleName.clear();
    m_probeName.clear();
    m_counters.clear();
    m_formulas.clear();
    m_sampleWindow = 0;
    m_jobNum = -1;
    m_suppress = false;
}

void UsecaseInfo::AddCounter(const _CounterLineInfo* counter) { m_counters.push_back(*counter); }

void UsecaseInfo::AddFormula(const char* name, const char* formula, const char* unit, unsigned int ofmask) {
    m_formulas.push_back({name, formula, unit, 0, ofmask});
}

unsigned int UsecaseInfo::GetNumCounters() const { return static_cast<unsigned int>(m_counters.size()); }

unsigned int UsecaseInfo::GetNumFormulars() const { return static_cast<unsigned int>(m_formulas.size()); }

_CounterLineInfo* UsecaseInfo::GetCounterInfo(unsigned int index) { return ItemAt(m_counters, index); }

FormulaInfo* UsecaseInfo::GetFormula(unsigned int index) { return ItemAt(m_formulas, index); }

std::span<const BlockField<UsecaseInfo>> UsecaseInfo::Fields() {
    static constexpr BlockField<UsecaseInfo> fields[] = {
        {"id", &UsecaseInfo::m_moduleId},     {"name", &UsecaseInfo::m_moduleName},
        {"jobid", &UsecaseInfo::m_jobNum},    {"probe", &UsecaseInfo::m_probeName},
        {"sw", &UsecaseInfo::m_sampleWindow}, {"suppress", &UsecaseInfo::m_suppress},
    };
    return fields;
}

int UsecaseInfo::DoExport(std::string& out) const {
    AppendBlockLine(out, BlockOpen);
    WriteFields(out, *this, Fields());
    for (const _CounterLineInfo& counter : m_counters) {
        std::string key(1, '#');
        key += std::to_string(WrittenValue(counter.number));
        AppendKeyLine(out, key, counter.text);
    }
    for (const FormulaInfo& formula : m_formulas) {
        WriteFormula(out, formula);
    }
    AppendBlockLine(out, BlockClose);
    return 0;
}

int UsecaseInfo::DoImport(const char* line, std::istringstream& in) {
    return ReadBlock(line, in, AcceptsFirstLine, [&](std::string& current) {
        const bool inFormula = current == FormulaOpen;
        if (inFormula && !ReadBlockLine(current, in)) {
            return LineResult::BlockDone;  // The block counts as complete (docs/use-case-blocks.md).
        }
        return ProccessLine(current.c_str(), inFormula, in) == 0 ? LineResult::Next : LineResult::Bad;
    });
}

int UsecaseInfo::ProccessLine(const char* line, bool inFormula, std::istringstream& in) {
    KeyLine keyLine;
    const int result = SplitKeyLine(line, keyLine);
    if (result != 0) {
        return result;
    }
    if (inFormula) {
        return ReadFormula(keyLine, in);
    }
    StoreKey(keyLine);
    return 0;
}

void UsecaseInfo::StoreKey(const KeyLine& keyLine) {
    if (keyLine.key.starts_with('#')) {
        const std::string number(keyLine.key.substr(1));
        m_counters.push_back({static_cast<std::uint32_t>(BlockNumber(number.c_str())), keyLine.value});
    } else {
        StoreField(*this, Fields(), keyLine);
    }
}

// Only "$/", a blank line or the end of the text ends a formula (docs/use-case-blocks.md): a "}" has no "=" and is
// skipped.
int UsecaseInfo::ReadFormula(KeyLine first, std::istringstream& in) {
    FormulaInfo formula;
    StoreField(formula, FormulaFields, first);
    for (std::string line; ReadBlockLine(line, in) && line != FormulaClose;) {
        const int result = StoreLine(formula, FormulaFields, line.c_str());
        if (result < 0) {
            return result;
        }
    }
    formula.tagNumber = TagNumber(formula.formula);
    m_formulas.push_back(std::move(formula));
    return 0;
}

int UsecaseInfo::SearchForNextUsecase(const char* line, std::istringstream& in) { return SearchForNextBlock(line, in); }

}  // namespace Zu::Wep::Trace
