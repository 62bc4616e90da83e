#include "tool/commands/Check.h"

#include <fmt/format.h>

#include <optional>

#include "stmdcm/Failure.h"
#include "stmdcm/plugin/PluginReading.h"
#include "tool/commands/CheckReport.h"
#include "tool/output/GuardedHome.h"

namespace stmdcm {

namespace {

Severity ToSeverity(const std::string& name) {
    for (const Severity severity : {Severity::Error, Severity::Warning}) {
        if (name == SeverityName(severity)) {
            return severity;
        }
    }
    return Severity::Note;
}

std::optional<ConfigurationKind> ToKind(const std::string& name) {
    if (name.empty()) {
        return std::nullopt;
    }
    return name == "capture" ? ConfigurationKind::Capture : ConfigurationKind::Settings;
}

}  // namespace

void Check::Declare(CLI::App& app) {
    auto* list = app.add_flag("--list", m_list, "List the kinds of findings instead");
    app.add_option("FILE", m_files, "Captures and settings files")->excludes(list);
    app.add_option("--as", m_kind, "Take every file for a capture or for settings, whatever it looks like")
        ->check(CLI::IsMember({"capture", "settings"}))
        ->type_name("KIND");
    app.add_option("--severity", m_severity, "Show nothing below this: error, warning or note")
        ->check(CLI::IsMember({"error", "warning", "note"}))
        ->type_name("SEVERITY");
    app.footer(
        "Goes on after a bad file. Ends with status 1 when an error or a warning is shown; notes alone are\n"
        "no problem. docs/check.md explains the findings.\n\n"
        "Example:\n  stmdcm check --severity warning capture.tdf settings.dcm");
}

ExitStatus Check::Run(const Context& context) {
    if (m_list) {
        context.console.Print(context.options.json ? CheckReport::ListJson()
                                                   : CheckReport::ListText(context.console.Out()));
        return ExitStatus::Done;
    }
    if (m_files.empty()) {
        throw Failure("check needs a FILE, or --list", Failure::Kind::Request);
    }
    std::vector<Reading> reports;
    for (const std::string& file : m_files) {
        reports.push_back(CheckFile(file, ToKind(m_kind)));
        if (!reports.back().kind) {
            context.console.Diagnose(fmt::format("{}: {}", file, reports.back().findings.Sorted().front().what));
        }
    }
    bool isOtherwise = false;
    for (const Reading& report : reports) {
        if (context.options.plugin.empty() || !report.kind) {
            continue;
        }
        const GuardedHome home;
        for (const std::string& sentence : DifferencesThroughPlugin(Plugin(home, context.options.plugin), report)) {
            context.console.Diagnose(sentence);
            isOtherwise = true;
        }
    }
    const CheckReport report(reports, ToSeverity(m_severity));
    context.console.Print(context.options.json ? report.Json() : report.Text(context.console.Out()));
    return report.HasProblem() || isOtherwise ? ExitStatus::Failed : ExitStatus::Done;
}

}  // namespace stmdcm
