#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tool/check/BlockText.h"
#include "tool/check/Findings.h"
#include "tool/check/UsecaseRules.h"
#include "trace/usecase/BlockReader.h"

namespace stmdcm {

/// A use case as far as the check needs it.
struct UsecaseModel {
    std::size_t line = 0;  ///< of its opening brace
    std::string name;
    std::int32_t job = -1;
    std::uint32_t module = 0;
    std::size_t counters = 0;
    std::vector<std::uint32_t> tags;  ///< one for each formula
};

/// What the reader of one kind makes of a text.
struct KindReading {
    std::vector<UsecaseModel> usecases;
    std::set<std::size_t> openers;        ///< indices of the lines that open the blocks it read, or dropped and told so
    std::optional<std::size_t> blankEnd;  ///< index of the blank line that ended the reading
    Findings findings;
};

/// Reads the use cases of one kind as the plug-in does, with the plug-in's own block reader, and tells what it meets.
class UsecaseReader {
  public:
    /// Borrows all but the place.
    UsecaseReader(const KindRules& rules, const BlockText& text, Place place);

    KindReading Run();

  private:
    using LineResult = Zu::Wep::Trace::LineResult;
    using KeyLine = Zu::Wep::Trace::KeyLine;
    using Trail = std::map<std::string, std::size_t, std::less<>>;  ///< the keys that were set, each with its line

    int ReadOne(const std::string& line);
    bool Accepts(const std::string& first);
    LineResult Process(std::string& line);
    LineResult TakeKeyLine(const std::string& line);
    void TakeCounter(const KeyLine& keyLine);
    LineResult ReadFormula(std::string& line);
    LineResult TakeFormulaLines(const KeyLine& first);
    void AddFormula();
    void TakeField(std::span<const FieldRule> fields, const KeyLine& keyLine, Trail& trail);
    void StoreField(const FieldRule& field, const std::string& value);
    void CheckText(std::string_view key, const std::string& value);
    LineResult BadLine(const std::string& line, int result);
    void DropBlock();

    std::size_t Index() const { return m_text.Consumed(m_in) - 1; }
    std::size_t LineNumber() const { return m_text.Lines()[Index()].number; }
    void Add(const FindingKind& kind, std::string what, std::string effect);
    void AddFault(const FindingKind& kind, std::size_t line, std::string what, std::string effect);

    const KindRules& m_rules;
    const BlockText& m_text;
    Place m_place;
    std::istringstream m_in;
    KindReading m_reading;

    // Of the block that is being read:
    UsecaseModel m_usecase;
    std::optional<std::size_t> m_opener;
    bool m_isFirstLine = false;
    Trail m_keys;
    std::string m_formula;
    Findings m_findings;
    std::vector<Finding> m_faults;  ///< those that hold also when the block is dropped
};

}  // namespace stmdcm
