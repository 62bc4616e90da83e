#include <pybind11/stl.h>

#include <string>
#include <string_view>
#include <utility>

#include "python/src/Module.h"
#include "python/src/Unlocked.h"
#include "stmdcm/images/ImageFinder.h"
#include "stmdcm/pins/ImageExaminer.h"
#include "stmdcm/reading/ObjectFileCheck.h"
#include "stmdcm/reading/PossibleName.h"
#include "stmdcm/reading/Words.h"
#include "tool/report/CaptureDocument.h"
#include "tool/report/ReportPage.h"
#include "tool/reports/CheckReport.h"
#include "tool/reports/FailureReport.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

namespace {

namespace py = pybind11;

/// What `stmdcm check` ends with for the capture alone.
enum RowStatus { Done = 0, Problems = 1, Unread = 4 };

/// A line of the results (docs/farm.md).
struct Row {
    std::string line;
    RowStatus status;
};

/// What `show` tells first: what differs from the defaults, and how many there are of the rest.
JsonLine SummaryOf(const Reading& reading) {
    const Configuration& held = reading.configuration;
    JsonWriter out;
    out.BeginObject().Key("properties");
    if (reading.hasSettings) {
        JsonRenderer::WriteProperties(out, held.properties, true);
        out.Key("use_cases").BeginObject().Member("sc", held.sc.size()).Member("cpt", held.cpt.size());
        out.Member("pmi_cmi", held.pmi.size()).EndObject();
    } else {
        out.Value(nullptr).Member("use_cases", nullptr);
    }
    out.Key("object_files");
    reading.hasObjectFiles ? out.Value(held.objectFiles.size()) : out.Value(nullptr);
    return out.EndObject().Take();
}

/// The summary is the last member.
Row RowOf(JsonLine document, const JsonLine& summary, RowStatus status) {
    document.text.replace(document.text.size() - 1, 1, ",\"summary\":" + summary.text + "}");
    return {JsonRenderer::Line(document), status};
}

Row RowOf(const Failure& failure) {
    return RowOf(JsonWriter().Value(FailureReport::Document("check", failure)).Take(), {"null"}, Unread);
}

Row ReadRow(const std::string& path) {
    thread_local ImageExaminer examiner;  // many captures have the same images
    try {
        RequirePossibleName(path);
        const Reading reading = CheckFile(path, std::nullopt, &examiner);
        const std::vector<std::string> nothing;
        const CheckReport report{reading, Severity::Note, nothing};
        const bool isUnread = !reading.kind && reading.findings.Count(Kind("F-UNREADABLE")) > 0;
        return RowOf(report.Document(), SummaryOf(reading), isUnread ? Unread : report.HasProblem() ? Problems : Done);
    } catch (const Failure& failure) {
        return RowOf(failure);
    }
}

py::tuple Given(const Row& row) { return py::make_tuple(py::bytes(row.line), static_cast<int>(row.status)); }

py::tuple FailureRow(const std::string& path, const std::string& cause) {
    try {
        RequirePossibleName(path);
        return Given(RowOf(Failure(path, cause)));
    } catch (const Failure& failure) {
        return Given(RowOf(failure));
    }
}

/// Document and text of one capture on the page (docs/report.md).
py::tuple PageBlock(const std::string& path) {
    thread_local ImageFinder finder({}, {});  // many captures have the same images
    std::string line;
    std::string text;
    Unlocked(path, [&] {
        try {
            RequirePossibleName(path);
            CaptureDocument document(path, finder);
            line.swap(document.line);
            text.swap(document.text);
        } catch (const Failure& failure) {
            line = JsonRenderer::Line(FailureReport::Document("report", failure));
            text = Shown(failure.File()) + ": " + failure.Cause();
        }
    });
    return py::make_tuple(py::bytes(line), py::bytes(text));
}

/// The page, piece by piece: what is written since it was asked for the last time.
class PagePieces {
  public:
    void Add(const std::string& line, const std::string& text) { m_page.Add(line, text); }
    void End() { m_page.End(); }
    py::bytes Take() { return std::exchange(m_written, {}); }

  private:
    std::string m_written;
    ReportPage m_page{[this](std::string_view text) { m_written += text; }};
};

py::dict Defaults() {
    const Zu::Wep::Trace::StmProperties fresh;
    py::dict values;
    for (const auto& row : Zu::Wep::Trace::kStmProperties) {
        values[row.name] = row.flag != nullptr ? static_cast<std::int32_t>(fresh.*row.flag) : fresh.*row.integer;
    }
    return values;
}

}  // namespace

void DeclareFarm(py::module_& module) {
    module.def("row", [](const std::string& path) { return Given(Unlocked(path, [&] { return ReadRow(path); })); });
    module.def("failure_row", &FailureRow);
    module.def("defaults", &Defaults);
    module.def("page_block", &PageBlock);
    py::class_<PagePieces>(module, "Page", py::metaclass(reinterpret_cast<PyObject*>(&PyType_Type)))
        .def(py::init())
        .def("add", &PagePieces::Add)
        .def("end", &PagePieces::End)
        .def("take", &PagePieces::Take);
    module.def("version", [] { return STMDCM_VERSION; });
}

}  // namespace stmdcm
