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

constexpr std::size_t IndexOf(Severity severity) { return static_cast<std::size_t>(severity); }

constexpr Severity kSeverities[] = {Severity::Error, Severity::Warning, Severity::Note};

/// By severity: note, warning, error.
constexpr Style kSeverityStyles[] = {Style::Quiet, Style::Notable, Style::Bad};

Style StyleOf(const FindingKind& kind) { return kSeverityStyles[IndexOf(kind.severity)]; }

void Write(JsonWriter& out, const Finding& finding, const std::string& next) {
    const Place& place = finding.place;
    out.BeginObject().Member("id", finding.kind->id).Member("severity", SeverityName(finding.kind->severity));
    out.Key("section").OrNull(place.section);
    out.Key("offset").OrNull(place.offset ? std::to_string(*place.offset) : "").Key("line");
    place.line != 0 ? out.Value(place.line) : out.Value(nullptr);
    out.Member("what", finding.what).Member("reader", finding.effect).Key("next").OrNull(next).EndObject();
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

std::array<std::size_t, 3> CheckReport::Numbers() const {
    std::array<std::size_t, 3> numbers{};
    for (const FindingKind& kind : kFindingKinds) {
        if (const std::size_t count = file.findings.Count(kind); count > 0 && IsShown(kind)) {
            numbers[IndexOf(kind.severity)] += count;
        }
    }
    return numbers;
}

bool CheckReport::HasProblem() const {
    const auto numbers = Numbers();
    return numbers[IndexOf(Severity::Error)] + numbers[IndexOf(Severity::Warning)] > 0;
}

std::vector<Count> CheckReport::Counts() const {
    const auto numbers = Numbers();
    std::vector<Count> counts;
    counts.reserve(std::size(kSeverities));
    for (const Severity severity : kSeverities) {
        counts.push_back({SeverityName(severity), numbers[IndexOf(severity)], true});
    }
    return counts;
}

template <class Tell>
void CheckReport::EachUntold(Tell tell) const {
    for (const FindingKind& kind : kFindingKinds) {
        const std::size_t count = file.findings.Count(kind);
        if (count > Findings::kMaxOfKind && IsShown(kind)) {
            tell(kind, count - Findings::kMaxOfKind);
        }
    }
}

std::string CheckReport::Text(const Palette& palette) const {
    std::string text = fmt::format("{}: {}; {}\n", palette.Paint(Style::Heading, Shown(file.path)),
                                   Escaped(VerdictOn(file).sentence), InWords(Counts()));
    const NextCommands next(file, NextCommands::LongNames::AsFile);
    std::set<std::string> named;
    // Without fmt, which takes longer than all else where there are thousands of captures.
    const auto tell = [&](const FindingKind& kind, const std::string& place, const std::string& what) {
        text += "  " + palette.Paint(StyleOf(kind), SeverityName(kind.severity)) + ' ';
        text += kind.id;
        (text += place.empty() ? "" : " ") += place;
        (text += ": ") += what;
        text += '\n';
    };
    for (const Finding& finding : file.findings.Sorted()) {
        if (!IsShown(*finding.kind)) {
            continue;
        }
        tell(*finding.kind, InWords(finding.place), finding.what);
        ((text += "      reader: ") += finding.effect) += '\n';
        if (const std::string command = next.For(*finding.kind); !command.empty() && named.insert(command).second) {
            ((text += "      next: ") += command) += '\n';
        }
    }
    EachUntold([&](const FindingKind& kind, std::size_t count) {
        tell(kind, "", fmt::format("{} more of this kind", count));
    });
    return text;
}

void CheckReport::WriteFile(JsonWriter& out) const {
    const Verdict verdict = VerdictOn(file);
    const NextCommands next(file);
    out.BeginObject().Member("path", file.path).Key("kind").OrNull(file.kind ? KindName(*file.kind) : "");
    out.Member("loads", verdict.loads).Member("missing", verdict.missing).Member("verdict", verdict.sentence);
    out.Key("findings").BeginArray();
    for (const Finding& finding : file.findings.Sorted()) {
        if (IsShown(*finding.kind)) {
            Write(out, finding, next.For(*finding.kind));
        }
    }
    out.EndArray().Key("more").BeginArray();
    EachUntold([&](const FindingKind& kind, std::size_t count) {
        out.BeginObject().Member("id", kind.id).Member("count", count).EndObject();
    });
    out.EndArray();
    for (const Count& count : Counts()) {
        out.Member(count.what + "s", count.number);
    }
    out.EndObject();
}

JsonLine CheckReport::Document() const {
    JsonWriter out = JsonRenderer::Begin("check");
    out.Key("files").BeginArray();
    WriteFile(out);
    return out.EndArray().Member("problems", HasProblem()).EndObject().Take();
}

}  // namespace stmdcm
