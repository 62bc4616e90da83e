#include "tool/reports/CheckReport.h"

#include <fmt/format.h>
#include <algorithm>
#include <iterator>
#include <set>

#include "stmdcm/reading/Verdict.h"
#include "stmdcm/reading/Words.h"
#include "tool/render/Table.h"
#include "tool/reports/NextCommand.h"

namespace stmdcm {

namespace {

constexpr Severity kSeverities[] = {Severity::Error, Severity::Warning, Severity::Note};

/// By severity: note, warning, error.
constexpr Style kSeverityStyles[] = {Style::Quiet, Style::Notable, Style::Bad};

Style StyleOf(const FindingKind& kind) { return kSeverityStyles[static_cast<std::size_t>(kind.severity)]; }

Json ToJson(const Finding& finding, const std::string& next) {
    const Place& place = finding.place;
    return {{"id", finding.kind->id},
            {"severity", SeverityName(finding.kind->severity)},
            {"section", JsonRenderer::OrNull(place.section)},
            {"offset", place.offset ? Json(std::to_string(*place.offset)) : nullptr},
            {"line", place.line != 0 ? Json(place.line) : nullptr},
            {"what", finding.what},
            {"reader", finding.effect},
            {"next", JsonRenderer::OrNull(next)}};
}

}  // namespace

Severity ToSeverity(const std::string& name) {
    return *std::find_if(std::begin(kSeverities), std::end(kSeverities),
                         [&](Severity severity) { return name == SeverityName(severity); });
}

std::string KindList::Text(const Palette& palette) {
    Table table;
    for (const FindingKind& kind : kFindingKinds) {
        table.AddRow({{kind.id}, {SeverityName(kind.severity), StyleOf(kind)}, {kind.meaning}});
    }
    return table.Text(palette, 0);
}

Json KindList::Document() {
    Json document = JsonRenderer::Document("check");
    for (const FindingKind& kind : kFindingKinds) {
        document["kinds"].push_back(
            {{"id", kind.id}, {"severity", SeverityName(kind.severity)}, {"meaning", kind.meaning}});
    }
    return document;
}

bool CheckReport::IsShown(const FindingKind& kind) const {
    return kind.severity >= least && std::find(ignored.begin(), ignored.end(), kind.id) == ignored.end();
}

std::map<Severity, std::size_t> CheckReport::Numbers() const {
    std::map<Severity, std::size_t> numbers;
    for (const FindingKind& kind : kFindingKinds) {
        if (const std::size_t count = file.findings.Count(kind); count > 0 && IsShown(kind)) {
            numbers[kind.severity] += count;
        }
    }
    return numbers;
}

bool CheckReport::HasProblem() const {
    const auto numbers = Numbers();
    return numbers.contains(Severity::Error) || numbers.contains(Severity::Warning);
}

std::vector<Count> CheckReport::Counts() const {
    auto numbers = Numbers();
    std::vector<Count> counts;
    counts.reserve(std::size(kSeverities));
    for (const Severity severity : kSeverities) {
        counts.push_back({SeverityName(severity), numbers[severity], true});
    }
    return counts;
}

std::vector<Finding> CheckReport::Shown() const {
    std::vector<Finding> findings = file.findings.Sorted();
    std::erase_if(findings, [&](const Finding& finding) { return !IsShown(*finding.kind); });
    return findings;
}

template <class Tell>
void CheckReport::EachUntold(Tell tell) const {
    for (const FindingKind& kind : kFindingKinds) {
        const std::size_t count = file.findings.Count(kind);
        if (IsShown(kind) && count > Findings::kMaxOfKind) {
            tell(kind, count - Findings::kMaxOfKind);
        }
    }
}

std::string CheckReport::Text(const Palette& palette) const {
    std::string text = fmt::format("{}: {}; {}\n", palette.Paint(Style::Heading, stmdcm::Shown(file.path)),
                                   Escaped(VerdictOn(file).sentence), InWords(Counts()));
    const NextCommands next(file, NextCommands::LongNames::AsFile);
    std::set<std::string> named;
    const auto tell = [&](const FindingKind& kind, const std::string& place, const std::string& what) {
        text += fmt::format("  {} {}{}{}: {}\n", palette.Paint(StyleOf(kind), SeverityName(kind.severity)), kind.id,
                            place.empty() ? "" : " ", place, what);
    };
    for (const Finding& finding : Shown()) {
        tell(*finding.kind, InWords(finding.place), finding.what);
        text += fmt::format("      reader: {}\n", finding.effect);
        if (const std::string command = next.For(*finding.kind); !command.empty() && named.insert(command).second) {
            text += fmt::format("      next: {}\n", command);
        }
    }
    EachUntold([&](const FindingKind& kind, std::size_t count) {
        tell(kind, "", fmt::format("{} more of this kind", count));
    });
    return text;
}

Json CheckReport::FileDocument() const {
    const Verdict verdict = VerdictOn(file);
    const NextCommands next(file);
    Json object = {{"path", file.path},           {"kind", file.kind ? Json(KindName(*file.kind)) : nullptr},
                   {"loads", verdict.loads},      {"missing", verdict.missing},
                   {"verdict", verdict.sentence}, {"findings", Json::array()},
                   {"more", Json::array()}};
    for (const Finding& finding : Shown()) {
        object["findings"].push_back(ToJson(finding, next.For(*finding.kind)));
    }
    EachUntold([&](const FindingKind& kind, std::size_t count) {
        object["more"].push_back({{"id", kind.id}, {"count", count}});
    });
    for (const Count& count : Counts()) {
        object[count.what + "s"] = count.number;
    }
    return object;
}

Json CheckReport::Document() const {
    return JsonRenderer::Document("check", {{"files", Json::array({FileDocument()})}, {"problems", HasProblem()}});
}

}  // namespace stmdcm
