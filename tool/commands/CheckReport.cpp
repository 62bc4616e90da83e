#include "tool/commands/CheckReport.h"

#include <fmt/format.h>

#include <utility>

#include "stmdcm/reading/Words.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Table.h"

namespace stmdcm {

namespace {

constexpr Severity kSeverities[] = {Severity::Error, Severity::Warning, Severity::Note};

Style StyleOf(Severity severity) {
    switch (severity) {
        case Severity::Error:
            return Style::Bad;
        case Severity::Warning:
            return Style::Notable;
        case Severity::Note:
            break;
    }
    return Style::Quiet;
}

std::size_t CountIn(const std::vector<const Reading*>& reports, Severity severity) {
    std::size_t count = 0;
    for (const Reading* report : reports) {
        count += report->findings.Count(severity);
    }
    return count;
}

/// How many of a kind there are beyond those that are told.
std::size_t Untold(const Findings& findings, const FindingKind& kind) {
    const std::size_t count = findings.Count(kind);
    return count > Findings::kMaxOfKind ? count - Findings::kMaxOfKind : 0;
}

JsonRenderer::Json ToJson(const Finding& finding) {
    const Place& place = finding.place;
    return {
        {"id", finding.kind->id},
        {"severity", SeverityName(finding.kind->severity)},
        {"section", place.section.empty() ? JsonRenderer::Json(nullptr) : JsonRenderer::Json(place.section)},
        {"offset", place.offset ? JsonRenderer::Json(fmt::format("{}", *place.offset)) : JsonRenderer::Json(nullptr)},
        {"line", place.line != 0 ? JsonRenderer::Json(place.line) : JsonRenderer::Json(nullptr)},
        {"what", finding.what},
        {"reader", finding.effect}};
}

}  // namespace

bool CheckReport::HasProblem() const {
    for (const Reading& report : m_reports) {
        for (const Severity severity : {Severity::Error, Severity::Warning}) {
            if (IsShown(severity) && report.findings.Count(severity) > 0) {
                return true;
            }
        }
    }
    return false;
}

std::string CheckReport::CountsInWords(const std::vector<const Reading*>& reports) const {
    std::string words;
    for (const Severity severity : kSeverities) {
        const std::size_t count = CountIn(reports, severity);
        if (IsShown(severity) && count > 0) {
            words += fmt::format("{}{}", words.empty() ? "" : ", ", Counted(count, SeverityName(severity)));
        }
    }
    return words.empty() ? "nothing found" : words;
}

std::string CheckReport::FileText(const Reading& report, const Palette& palette) const {
    std::string text = fmt::format("{}: {}\n", palette.Paint(Style::Heading, InWords(Unit::None, report.path)),
                                   CountsInWords({&report}));
    const auto told = [&](const FindingKind& kind, const std::string& place, const std::string& what) {
        text += fmt::format("  {} {}{}{}: {}\n", palette.Paint(StyleOf(kind.severity), SeverityName(kind.severity)),
                            kind.id, place.empty() ? "" : " ", place, what);
    };
    for (const Finding& finding : report.findings.Sorted()) {
        if (IsShown(finding.kind->severity)) {
            told(*finding.kind, InWords(finding.place), finding.what);
            text += fmt::format("      reader: {}\n", finding.effect);
        }
    }
    for (const FindingKind& kind : kFindingKinds) {
        const std::size_t untold = Untold(report.findings, kind);
        if (IsShown(kind.severity) && untold > 0) {
            told(kind, "", fmt::format("{} more of this kind", untold));
        }
    }
    return text;
}

std::string CheckReport::Text(const Palette& palette) const {
    std::string text;
    std::vector<const Reading*> all;
    for (const Reading& report : m_reports) {
        text += FileText(report, palette);
        all.push_back(&report);
    }
    if (m_reports.size() > 1) {
        text += fmt::format("{}: {}\n", Counted(m_reports.size(), "file"), CountsInWords(all));
    }
    return text;
}

JsonRenderer::Json CheckReport::FileJson(const Reading& report) const {
    auto findings = JsonRenderer::Json::array();
    for (const Finding& finding : report.findings.Sorted()) {
        if (IsShown(finding.kind->severity)) {
            findings.push_back(ToJson(finding));
        }
    }
    auto more = JsonRenderer::Json::array();
    for (const FindingKind& kind : kFindingKinds) {
        const std::size_t untold = Untold(report.findings, kind);
        if (IsShown(kind.severity) && untold > 0) {
            more.push_back({{"id", kind.id}, {"count", untold}});
        }
    }
    JsonRenderer::Json object = {{"path", report.path},
                                 {"kind", report.kind ? JsonRenderer::Json(KindName(*report.kind)) : nullptr},
                                 {"findings", std::move(findings)},
                                 {"more", std::move(more)}};
    for (const Severity severity : kSeverities) {
        object[fmt::format("{}s", SeverityName(severity))] = IsShown(severity) ? report.findings.Count(severity) : 0;
    }
    return object;
}

std::string CheckReport::Json() const {
    auto document = JsonRenderer::Document("check");
    document["files"] = JsonRenderer::Json::array();
    for (const Reading& report : m_reports) {
        document["files"].push_back(FileJson(report));
    }
    document["problems"] = HasProblem();
    return JsonRenderer::Text(document);
}

std::string CheckReport::ListText(const Palette& palette) {
    Table table;
    for (const FindingKind& kind : kFindingKinds) {
        table.AddRow({{kind.id}, {SeverityName(kind.severity), StyleOf(kind.severity)}, {kind.meaning}});
    }
    return table.Text(palette, 0);
}

std::string CheckReport::ListJson() {
    auto document = JsonRenderer::Document("check");
    document["kinds"] = JsonRenderer::Json::array();
    for (const FindingKind& kind : kFindingKinds) {
        document["kinds"].push_back(
            {{"id", kind.id}, {"severity", SeverityName(kind.severity)}, {"meaning", kind.meaning}});
    }
    return JsonRenderer::Text(document);
}

}  // namespace stmdcm
