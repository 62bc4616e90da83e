#include "stmdcm/reading/Reading.h"

#include <sys/stat.h>

#include "python/src/Module.h"
#include "python/src/Unlocked.h"
#include "stmdcm/capture/Container.h"
#include "stmdcm/capture/FileStamp.h"
#include "stmdcm/reading/Verdict.h"
#include "tool/reports/CheckReport.h"
#include "tool/reports/SectionsReport.h"
#include "tool/reports/ShowReport.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

namespace {

namespace py = pybind11;

/// What was read, and of which file. Python's threads may share it: nothing of it changes.
struct ReadFile {
    FileStamp stamp;  ///< before it was read
    Reading reading;
};

FileStamp StampOf(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? FileStamp(info) : FileStamp();
}

ReadFile ReadThat(const std::string& path) {
    const FileStamp stamp = StampOf(path);
    return {stamp, Read(path)};
}

/// In the order of the table, for as long as the program runs.
const std::vector<PyObject*>& PropertyNames() {
    static const auto* names = [] {
        auto* made = new std::vector<PyObject*>;
        for (const auto& row : Zu::Wep::Trace::kStmProperties) {
            made->push_back(PyUnicode_InternFromString(std::string(row.name).c_str()));
        }
        return made;
    }();
    return *names;
}

template <std::int32_t Property::*Value>
py::dict ValuesIn(const ReadFile& file) {
    py::dict values;
    const auto& properties = file.reading.configuration.properties;
    for (std::size_t i = 0; file.reading.hasSettings && i < properties.size(); ++i) {
        const std::int32_t number = properties[i].*Value;
        const auto value = properties[i].isFlag ? py::object(py::bool_(number != 0)) : py::object(py::int_(number));
        if (PyDict_SetItem(values.ptr(), PropertyNames()[i], value.ptr()) != 0) {
            throw py::error_already_set();
        }
    }
    return values;
}

std::string Show(const ReadFile& file) {
    const std::vector<std::string> all;
    return JsonRenderer::Line(ShowReport::Of(file.reading, {}, all).Document());
}

std::string Check(const ReadFile& file) {
    const std::vector<std::string> nothing;
    return JsonRenderer::Line(CheckReport{file.reading, Severity::Note, nothing}.Document());
}

std::string Sections(const ReadFile& file) {
    std::string text;
    const Container container(file.reading.path);
    if (FileStamp::Of(container.File().File(), container.Path()) != file.stamp) {
        throw Failure(container.Path(), "the file was changed since it was read; read it again");
    }
    SectionsReport(container, Palette(false), [&](std::string_view piece) { text += piece; }).PrintDocument();
    return text;
}

py::tuple CountFindings(const ReadFile& file) {
    const Findings& findings = file.reading.findings;
    return py::make_tuple(findings.Count(Severity::Error), findings.Count(Severity::Warning),
                          findings.Count(Severity::Note));
}

py::tuple CountItems(const ReadFile& file) {
    const Configuration& held = file.reading.configuration;
    return py::make_tuple(held.sc.size(), held.cpt.size(), held.pmi.size(), held.objectFiles.size());
}

/// Calls `ask` with what was read, without the interpreter's lock.
template <auto Ask>
auto Asked(const ReadFile& file) {
    return Unlocked(file.reading.path, [&] { return Ask(file); });
}

}  // namespace

void DeclareReading(py::module_& module) {
    PropertyNames();
    py::class_<ReadFile>(module, "ReadFile", py::metaclass(reinterpret_cast<PyObject*>(&PyType_Type)))
        .def("path", [](const ReadFile& file) { return py::bytes(file.reading.path); })
        .def("kind", [](const ReadFile& file) { return KindName(*file.reading.kind); })
        .def("loads", [](const ReadFile& file) { return file.reading.isLoaded; })
        .def("verdict", [](const ReadFile& file) { return TextOf(VerdictOn(file.reading).sentence); })
        .def("properties", &ValuesIn<&Property::value>)
        .def("defaults", &ValuesIn<&Property::defaultValue>)
        .def("count_findings", &CountFindings)
        .def("count_items", &CountItems)
        .def("show", &Asked<Show>)
        .def("check", &Asked<Check>)
        .def("sections", &Asked<Sections>);
    module.def("read", [](const std::string& path) { return Unlocked(path, [&] { return ReadThat(path); }); });
}

}  // namespace stmdcm
