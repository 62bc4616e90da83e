#include <pybind11/stl.h>

#include "python/src/Module.h"
#include "python/src/Unlocked.h"
#include "stmdcm/capture/LockedFile.h"
#include "stmdcm/change/AppliedSource.h"
#include "stmdcm/change/PropertyChange.h"
#include "tool/reports/ChangeReport.h"
#include "tool/reports/HistoryReport.h"
#include "tool/reports/RestoreReport.h"

namespace stmdcm {

namespace {

namespace py = pybind11;

using Words = std::vector<std::string>;

ChangeMode ModeOf(bool isDryRun) { return isDryRun ? ChangeMode::DryRun : ChangeMode::Write; }

std::string SetText(const std::string& file, const Words& assignments, bool force, bool isDryRun) {
    return Unlocked(file, [&] {
        const ChangeResult result = PropertyChange(assignments).In(file, force, ModeOf(isDryRun));
        return JsonRenderer::Line(SetReport{result}.Document());
    });
}

std::string ApplyText(const std::string& path, const std::string& capture, const AppliedSource::Wanted& wanted,
                      bool isDryRun) {
    return Unlocked(capture, [&] {
        const AppliedSource source(path, wanted);
        const ChangeResult result = source.ApplyTo(capture, ModeOf(isDryRun));
        return JsonRenderer::Line(ApplyReport{path, source.Doubts(), isDryRun, result, {}}.Document());
    });
}

std::string HistoryText(const std::string& capture, std::optional<std::size_t> keep) {
    return Unlocked(capture, [&] {
        const Container container(capture);
        const History history(container);
        HistoryReport report = HistoryReport::Of(capture, container, history);
        if (keep) {
            report.prune = PlanPrune(container, history, *keep);
        }
        return JsonRenderer::Line(report.Document());
    });
}

std::string RestoreText(const std::string& capture, std::size_t number, bool isDryRun) {
    return Unlocked(capture, [&] {
        const RestoreReport report{capture, number, RestoreConfiguration(capture, number, ModeOf(isDryRun))};
        return JsonRenderer::Line(report.Document());
    });
}

/// By the module's logger, since who waits for a lock may be any thread of the program.
void TellLongWait(const std::string& path) {
    const py::gil_scoped_acquire acquired;
    py::module_::import("stmdcm._locks").attr("tell_long_wait")(TextOf(path));
}

}  // namespace

void DeclareChanges(py::module_& module) {
    LockedFile::OnLongWait(TellLongWait);
    LockedFile::OnInterrupt(LetPythonInterrupt);
    module.def("set", &SetText);
    module.def("apply", [](const std::string& source, const std::string& capture, Words only, Words except,
                           bool replace, bool force, bool isDryRun) {
        return ApplyText(source, capture, {std::move(only), std::move(except), replace, force}, isDryRun);
    });
    module.def("history", &HistoryText);
    module.def("restore", &RestoreText);
}

}  // namespace stmdcm
