#include "tool/report/CaptureDocument.h"

#include <fmt/format.h>

#include <algorithm>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/Container.h"
#include "stmdcm/explain/Statements.h"
#include "stmdcm/images/ImageUpdate.h"
#include "stmdcm/reading/ObjectFileCheck.h"
#include "stmdcm/reading/Words.h"
#include "tool/reports/CheckReport.h"
#include "tool/reports/FailureReport.h"
#include "tool/reports/HistoryReport.h"
#include "tool/reports/NextCommand.h"
#include "tool/reports/ObjectsReport.h"
#include "tool/reports/SectionsReport.h"
#include "tool/reports/ShowReport.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

namespace {

constexpr char kNull[] = "null";
const Palette kPlain(false);
const std::vector<std::string> kAll;

std::string OneLine(const JsonLine& document) { return document.text; }
std::string OneLine(const Json& document) { return JsonWriter().Value(document).Take().text; }

/// A document of several lines in one: outside of its texts, in which there are none, line feeds say nothing.
void AddInOneLine(std::string_view lines, std::string& line) {
    bool isIndent = false;
    for (const char c : lines) {
        isIndent = c == '\n' || (isIndent && c == ' ');
        if (!isIndent) {
            line += c;
        }
    }
}

/// What `make()` gives, or why it can't.
template <class Make>
std::string DocumentOr(const char* command, Make make) {
    try {
        return make();
    } catch (const Failure& failure) {
        return OneLine(FailureReport::Document(command, failure));
    }
}

std::string SectionsOf(const Container& capture) {
    std::string line;
    SectionsReport(capture, kPlain, [&](std::string_view lines) { AddInOneLine(lines, line); }).PrintDocument();
    return line;
}

/// What it is that a host gets of a property, nothing where no host gets it.
Json OriginOf(const Explanation& explanation) {
    for (const Statement& each : explanation.statements) {
        if (each.standing == Standing::InForce) {
            const Place& place = each.place;
            return {{"name", explanation.item},
                    {"source", each.source},
                    {"offset", place.offset ? Json(std::to_string(*place.offset)) : nullptr},
                    {"line", place.line != 0 ? Json(place.line) : nullptr}};
        }
    }
    return nullptr;
}

}  // namespace

CaptureDocument::CaptureDocument(const std::string& path, ImageFinder& finder)
    : m_reading(CheckFile(path, {}, &finder.Examiner())) {
    const Json head = JsonRenderer::Document("report", {{"file", path}, {"file_word", ShellWord(path)}});
    line = head.dump(-1, ' ', false, Json::error_handler_t::replace);
    line.pop_back();
    AddShown(path);
    const CheckReport report{m_reading, Severity::Note, kAll};
    Add("check", OneLine(report.Document()));
    text += report.Text(kPlain);
    AddContainer(path);
    AddImages(path, finder);
    AddOrigins(path);
    const Json invalid = JsonRenderer::InvalidTexts(head);
    line += invalid.empty() ? "}\n" : fmt::format(",\"bytes\":{}}}\n", invalid.dump());
    if (m_reading.findings.Count(Kind("F-UNREADABLE")) > 0) {
        whyNotOpened = fmt::format("{}: {}", Shown(path), m_reading.findings.Sorted().front().what);
    }
}

void CaptureDocument::Add(const char* name, const std::string& document) {
    line += fmt::format(",\"{}\":{}", name, document);
}

void CaptureDocument::AddShown(const std::string& path) {
    Add("show", DocumentOr("show", [&] {
            const Reading shown = Read(path);
            ShowReport report{
                shown, {shown.hasSettings, shown.hasSettings, shown.hasObjectFiles}, shown.Doubts(), false, kAll};
            for (const std::string& doubt : NotLookedAt(shown.configuration.objectFiles)) {
                report.doubts.push_back(doubt);
            }
            text += report.Text(kPlain) + "\n";
            return OneLine(report.Document());
        }));
}

/// A settings file has none.
void CaptureDocument::AddContainer(const std::string& path) {
    std::string history = kNull;
    const std::string sections = m_reading.kind == ConfigurationKind::Settings ? kNull : DocumentOr("sections", [&] {
        const Container capture(path);
        history = OneLine(HistoryReport::Of(path, capture, History(capture)).Document());
        return SectionsOf(capture);
    });
    Add("sections", sections);
    Add("history", history);
}

/// What `show` tells of images that have no pin is all that there is.
void CaptureDocument::AddImages(const std::string& path, ImageFinder& finder) {
    Add("objects", m_reading.pins == 0 ? kNull : DocumentOr("objects", [&] {
            return OneLine(ObjectsReport{ListImages(path, finder), {}}.Document());
        }));
}

/// None of a file that hosts read, and show and explain refuse: it can't be settings text.
void CaptureDocument::AddOrigins(const std::string& path) {
    Json origins = Json::array();
    try {
        if (m_reading.isLoaded) {
            const StatingFile file(path);
            for (const Zu::Wep::Trace::StmProperty& row : Zu::Wep::Trace::kStmProperties) {
                if (Json origin = OriginOf(ExplainProperty(file, row)); !origin.is_null()) {
                    origins.push_back(std::move(origin));
                }
            }
        }
    } catch (const Failure&) {
        origins.clear();
    }
    Add("origins", OneLine(origins));
}

}  // namespace stmdcm
