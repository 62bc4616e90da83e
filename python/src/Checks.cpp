#include <fmt/format.h>
#include <fmt/ranges.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <iterator>

#include "python/src/Module.h"
#include "python/src/Unlocked.h"
#include "stmdcm/pins/ImageExaminer.h"
#include "stmdcm/reading/Portability.h"
#include "tool/reports/CheckReport.h"
#include "tool/reports/DiffReport.h"

namespace stmdcm {

namespace {

namespace py = pybind11;

using Words = std::vector<std::string>;

/// Throws Failure, of a request, for a word that is none of these.
void RequireOneOf(const char* option, const std::string& word, const Words& words) {
    if (std::find(words.begin(), words.end(), word) == words.end()) {
        throw Failure(fmt::format("{}: \"{}\" is none of {}", option, word, fmt::join(words, ", ")),
                      Failure::Kind::Request);
    }
}

std::optional<ConfigurationKind> KindNamed(const std::optional<std::string>& name) {
    if (!name) {
        return std::nullopt;
    }
    RequireOneOf("as_", *name, {"capture", "settings"});
    return *name == "capture" ? ConfigurationKind::Capture : ConfigurationKind::Settings;
}

void RequireKinds(const Words& ids) {
    for (const std::string& id : ids) {
        if (std::none_of(std::begin(kFindingKinds), std::end(kFindingKinds),
                         [&](const FindingKind& kind) { return id == kind.id; })) {
            throw Failure(fmt::format("ignore: \"{}\" is no kind of finding", id), Failure::Kind::Request);
        }
    }
}

std::string CheckText(const std::string& path, const std::optional<std::string>& kind, const std::string& severity,
                      const Words& ignored, bool portable) {
    return Unlocked(path, [&] {
        RequireOneOf("severity", severity, {"error", "warning", "note"});
        RequireKinds(ignored);
        ImageExaminer examiner([](const auto&, auto, auto) { LetPythonInterrupt(); });
        Reading reading = CheckFile(path, KindNamed(kind), &examiner);
        if (portable) {
            CheckPortability(reading, [](const ObjectFile& file) { return file.pin.has_value(); });
        }
        return JsonRenderer::Line(CheckReport{reading, ToSeverity(severity), ignored}.Document());
    });
}

std::string DiffText(const std::string& left, const std::string& right) {
    return Unlocked(left, [&] {
        const Reading before = Read(left);
        before.RequireLoaded();
        const Reading after = Read(right);
        after.RequireLoaded();
        return JsonRenderer::Line(DiffReport{before, after}.Document());
    });
}

}  // namespace

void DeclareChecks(py::module_& module) {
    module.def("check", &CheckText);
    module.def("diff", &DiffText);
}

}  // namespace stmdcm
