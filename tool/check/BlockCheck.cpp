#include "tool/check/BlockCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

using Readings = std::array<KindReading, kUsecaseKinds.size()>;

/// A line as the readers get it.
std::string_view Stripped(std::string_view line) {
    line = line.substr(0, line.find_last_not_of(TrailingBlanks) + 1);
    return line.substr(0, line.find('\0'));
}

/// A block by its looks: a line that begins with a brace, and the one behind it.
struct Opener {
    enum class Type { Known, Unknown, Empty };

    std::size_t index;
    Type type = Type::Known;
    UsecaseKind kind = UsecaseKind::Sc;
};

/// Looks at blocks with the eyes of a person and tells where the readers see something else.
class StructureCheck {
  public:
    StructureCheck(const std::vector<BlockLine>& lines, const Readings& readings, const Place& place,
                   Findings& findings)
        : m_lines(lines), m_readings(readings), m_place(place), m_findings(findings) {}

    void Run() {
        bool isInside = false;
        bool isBehindFirst = false;
        for (std::size_t index = 0; index < m_lines.size(); ++index) {
            const std::string_view line = Stripped(m_lines[index].text);
            if (line.starts_with('{')) {
                TellOpener(MakeOpener(index));
                isInside = isBehindFirst = true;
            } else if (!isInside && isBehindFirst && !line.empty()) {
                Add(Kind("U-STRAY-LINE"), index, fmt::format("{} stands between the blocks", Quoted(line)),
                    "the line is skipped");
            } else if (line == BlockClose) {
                isInside = false;
            }
        }
        for (const KindRules& rules : kUsecaseKinds) {
            TellBlankEnd(rules);
        }
    }

  private:
    Opener MakeOpener(std::size_t index) const {
        const std::string_view first = index + 1 < m_lines.size() ? Stripped(m_lines[index + 1].text) : "";
        if (first == BlockClose) {
            return {index, Opener::Type::Empty};
        }
        if (!first.starts_with("type")) {
            return {index};
        }
        const auto* rules = std::find_if(kUsecaseKinds.begin(), kUsecaseKinds.end(),
                                         [first](const KindRules& each) { return each.typeLine == first; });
        return rules == kUsecaseKinds.end() ? Opener{index, Opener::Type::Unknown}
                                            : Opener{index, Opener::Type::Known, rules->kind};
    }

    void TellOpener(const Opener& opener) {
        const std::string_view line = Stripped(m_lines[opener.index].text);
        if (line != BlockOpen && !line.starts_with("{type")) {
            Add(Kind("U-OPENER-TEXT"), opener.index, fmt::format("text stands behind the brace: {}", Quoted(line)),
                "what stands behind the brace is not read");
        }
        switch (opener.type) {
            case Opener::Type::Unknown:
                Add(Kind("U-UNKNOWN-TYPE"), opener.index + 1,
                    fmt::format("{} is no type", Quoted(m_lines[opener.index + 1].text)), "the block is skipped");
                break;
            case Opener::Type::Empty:
                TellEmpty(opener);
                break;
            case Opener::Type::Known:
                if (!ReadingOf(opener.kind).openers.contains(opener.index)) {
                    m_lost[opener.kind].push_back(opener.index);
                    TellNotRead(opener.index, kUsecaseKinds[static_cast<std::size_t>(opener.kind)].name);
                }
                break;
        }
    }

    void TellEmpty(const Opener& opener) {
        std::string kinds;
        for (const KindRules& rules : kUsecaseKinds) {
            if (ReadingOf(rules.kind).openers.contains(opener.index)) {
                kinds += fmt::format("{}{}", kinds.empty() ? "" : ", ", rules.name);
            }
        }
        if (kinds.empty()) {
            TellNotRead(opener.index, "empty");
        } else {
            Add(Kind("U-EMPTY-BLOCK"), opener.index, "the block is empty",
                fmt::format("a use case with all defaults of each of: {}", kinds));
        }
    }

    void TellNotRead(std::size_t index, const char* name) {
        Add(Kind("U-NOT-READ"), index, fmt::format("the {} block that begins here is not met by its reader", name),
            "the use case is not read");
    }

    void TellBlankEnd(const KindRules& rules) {
        const auto& blank = ReadingOf(rules.kind).blankEnd;
        const auto& lost = m_lost[rules.kind];
        if (!blank) {
            return;
        }
        const auto behind = lost.end() - std::lower_bound(lost.begin(), lost.end(), *blank);
        if (behind > 0) {
            Add(Kind("U-BLANK-LINE"), *blank, fmt::format("a blank line ends the reading of {} use cases", rules.name),
                fmt::format("{} behind it are not read", Counted(static_cast<std::size_t>(behind), "use case")));
        }
    }

    const KindReading& ReadingOf(UsecaseKind kind) const { return m_readings[static_cast<std::size_t>(kind)]; }

    void Add(const FindingKind& kind, std::size_t index, std::string what, std::string effect) {
        m_findings.Add(kind, m_place.AtLine(m_lines[index].number), std::move(what), std::move(effect));
    }

    const std::vector<BlockLine>& m_lines;
    const Readings& m_readings;
    const Place& m_place;
    Findings& m_findings;
    std::map<UsecaseKind, std::vector<std::size_t>> m_lost;
};

std::string KeyOf(const KindRules& rules, const UsecaseModel& usecase) {
    return rules.kind == UsecaseKind::Pmi ? fmt::format("source {}", Quoted(usecase.name))
                                          : fmt::format("job {}, module {}", usecase.job, usecase.module);
}

void CheckUsecases(const KindRules& rules, const std::vector<UsecaseModel>& usecases, const Place& place,
                   Findings& findings) {
    const bool isPmi = rules.kind == UsecaseKind::Pmi;
    std::map<std::string, std::size_t> known;
    for (const UsecaseModel& usecase : usecases) {
        const std::string key = KeyOf(rules, usecase);
        if (const auto [first, isNew] = known.emplace(key, usecase.line); !isNew) {
            findings.Add(Kind("U-DUPLICATE"), place.AtLine(usecase.line),
                         fmt::format("a {} use case of {} stands on line {} already", rules.name, key, first->second),
                         isPmi ? "both are kept, and asked for its source a reader gives the first"
                               : "both are kept, and removing a job removes both");
        }
        if (isPmi && std::find(std::begin(kPmiSources), std::end(kPmiSources), usecase.name) == std::end(kPmiSources)) {
            findings.Add(Kind("U-SOURCE"), place.AtLine(usecase.line),
                         fmt::format("{} is no PMI/CMI source", Quoted(usecase.name)),
                         "kept, but no host can ask for it");
        }
    }
}

}  // namespace

UsecaseModels CheckBlocks(const std::vector<BlockLine>& lines, const Place& place, Findings& findings) {
    UsecaseModels models;
    if (lines.empty()) {
        return models;
    }
    const BlockText text(lines);
    Readings readings;
    for (std::size_t i = 0; i < kUsecaseKinds.size(); ++i) {
        readings[i] = UsecaseReader(kUsecaseKinds[i], text, place).Run();
        findings.Add(readings[i].findings);
        models[i] = std::move(readings[i].usecases);
        CheckUsecases(kUsecaseKinds[i], models[i], place, findings);
    }
    StructureCheck(lines, readings, place, findings).Run();
    return models;
}

}  // namespace stmdcm
