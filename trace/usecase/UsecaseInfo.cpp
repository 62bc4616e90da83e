#include "trace/usecase/UsecaseInfo.h"

#include "trace/usecase/UsecaseInfoBody.h"

namespace Zu::Wep::Trace {

/// In the order of the block's lines; counters and formulas apart.
template <>
struct UsecaseFields<UsecaseInfo> {
    static constexpr BlockField<UsecaseInfo> kTable[] = {
        {"id", &UsecaseInfo::m_moduleId},     {"name", &UsecaseInfo::m_moduleName},
        {"jobid", &UsecaseInfo::m_jobNum},    {"probe", &UsecaseInfo::m_probeName},
        {"sw", &UsecaseInfo::m_sampleWindow}, {"suppress", &UsecaseInfo::m_suppress},
    };
};

const UsecaseKind UsecaseInfo::kKind = UsecaseKind::Sc;

template class UsecaseInfoBase<UsecaseInfo, UsecaseInfoIF>;

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

UsecaseInfo::UsecaseInfo() = default;

UsecaseInfo::UsecaseInfo(const UsecaseInfo& other) = default;

UsecaseInfo::UsecaseInfo(UsecaseInfo&& other) noexcept = default;

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

UsecaseInfo::~UsecaseInfo() = default;

void UsecaseInfo::SetModuleId(unsigned int id) { m_moduleId = id; }

unsigned int UsecaseInfo::GetModuleId() const { return m_moduleId; }

void UsecaseInfo::SetModuleName(const char* name) { m_moduleName = name; }

const char* UsecaseInfo::GetModuleName() const { return m_moduleName.c_str(); }

void UsecaseInfo::SetProbeName(const char* name) { m_probeName = name; }

const char* UsecaseInfo::GetProbeName() const { return m_probeName.c_str(); }

void UsecaseInfo::SetSampleWindow(unsigned int window) { m_sampleWindow = window; }

unsigned int UsecaseInfo::GetSampleWindow() const { return m_sampleWindow; }

void UsecaseInfo::SetJobNum(int job) { m_jobNum = job; }

int UsecaseInfo::GetJobNum() const { return m_jobNum; }

void UsecaseInfo::SetSuppress(bool suppress) { m_suppress = suppress; }

bool UsecaseInfo::GetSuppress() const { return m_suppress; }

void UsecaseInfo::AddCounter(const _CounterLineInfo* counter) { m_counters.push_back(*counter); }

void UsecaseInfo::AddFormula(const char* name, const char* formula, const char* unit, unsigned int ofmask) {
    m_formulas.push_back({name, formula, unit, 0, ofmask});
}

unsigned int UsecaseInfo::GetNumCounters() const { return static_cast<unsigned int>(m_counters.size()); }

unsigned int UsecaseInfo::GetNumFormulars() const { return static_cast<unsigned int>(m_formulas.size()); }

_CounterLineInfo* UsecaseInfo::GetCounterInfo(unsigned int index) { return ItemAt(m_counters, index); }

FormulaInfo* UsecaseInfo::GetFormula(unsigned int index) { return ItemAt(m_formulas, index); }

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

std::vector<std::string_view> UsecaseInfo::FormulaKeys() { return KeysOf(kFormulaFields); }

void UsecaseInfo::Export(std::string& out, BlockWriteReporter& reporter) const {
    AppendBlockLine(out, kBlockOpen);
    WriteFields(out, *this, FieldsOf<UsecaseInfo>(), reporter);
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
        if (current != kFormulaOpen) {
            return ToLineResult(StoreKeyLine(current, in));
        }
        in.Tell(&TextReporter::OnFormulaOpened);
        if (!in.Next(current)) {
            in.Tell(&TextReporter::OnFormulaEnded, FormulaEnd::Empty);
            return LineResult::BlockDone;  // docs/use-case-blocks.md: the block counts as complete
        }
        return ToLineResult(ReadFormulaLines(current, in));
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
        StoreField(*this, FieldsOf<UsecaseInfo>(), keyLine, in);
    }
    return result;
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
