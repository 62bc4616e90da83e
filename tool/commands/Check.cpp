#include <fmt/format.h>

#include <memory>
#include <optional>

#include "stmdcm/Failure.h"
#include "stmdcm/pins/ImageExaminer.h"
#include "stmdcm/reading/Portability.h"
#include "stmdcm/reading/Words.h"
#include "tool/cli/ValueCheck.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/OtherPlugin.h"
#include "tool/many/ManyFiles.h"
#include "tool/output/InputFile.h"
#include "tool/reports/CheckReport.h"

namespace stmdcm {

namespace {

std::vector<std::string> KindNames() {
    std::vector<std::string> names;
    for (const FindingKind& kind : kFindingKinds) {
        names.emplace_back(kind.id);
    }
    return names;
}

bool IsPinned(const ObjectFile& file) { return file.pin.has_value(); }

/// Tells what the lenient readers pass over in silence (docs/check.md).
class Check final : public Command {
  public:
    void Declare(CLI::App& app) override {
        auto* list = app.add_flag("--list", m_list, "List the kinds of findings instead");
        m_files.DeclareFiles(app, "FILE", "Captures and settings files; - is standard input")->excludes(list);
        app.add_option("--as", m_kind, "Take every file for a capture or for settings, whatever it looks like")
            ->check(OneOf({"capture", "settings"}))
            ->type_name("KIND")
            ->excludes(list);
        app.add_option("--severity", m_severity, "Show nothing below this: error, warning or note")
            ->check(OneOf({"error", "warning", "note"}))
            ->type_name("SEVERITY")
            ->excludes(list);
        app.add_option("--ignore", m_ignored, "Show none of these kinds, which --list lists")
            ->check(OneOf(KindNames()))
            ->type_name("ID")
            ->delimiter(',')
            ->allow_extra_args(false)
            ->excludes(list);
        app.add_flag("--portable", m_portable, "Tell also what a capture would lack on another machine")
            ->excludes(list);
        m_files.DeclareOptions(app);
        app.footer(
            "Goes on after a bad file. What --ignore and --severity leave out does not count. Ends with status 1 when "
            "an error or a warning is shown; notes alone are no "
            "problem; with status 4 when a file could not be read. docs/check.md explains the findings.\n\nExample:\n"
            "  stmdcm check --severity warning capture.tdf settings.dcm");
    }

    ExitStatus Run(const Context& context) override {
        if (m_list) {
            context.Print(KindList());
            return ExitStatus::Done;
        }
        if (!m_files.IsAny()) {
            throw Failure("check needs a FILE, or --list", Failure::Kind::Request);
        }
        const auto examiner = std::make_shared<ImageExaminer>();
        if (m_files.IsForking()) {
            examiner->ShareAmongForked();
        }
        return m_files.Run(
            context, [this, plugin = OtherPlugin(), examiner](const Context& own, const std::string& file) mutable {
                return CheckOne(own, file, plugin, *examiner);
            });
    }

    bool LoadsPlugin() const override { return true; }
    ExitStatus FailureStatus() const override { return ExitStatus::Unread; }

  private:
    std::optional<ConfigurationKind> KindAskedFor() const {
        if (m_kind.empty()) {
            return std::nullopt;
        }
        return m_kind == "capture" ? ConfigurationKind::Capture : ConfigurationKind::Settings;
    }

    FileResult CheckOne(const Context& context, const std::string& file, OtherPlugin& plugin,
                        ImageExaminer& examiner) const {
        Reading reading =
            InputFile(file).Read([&](const std::string& path) { return CheckFile(path, KindAskedFor(), &examiner); });
        if (m_portable) {
            CheckPortability(reading, IsPinned);
        }
        const CheckReport report{reading, ToSeverity(m_severity), m_ignored};
        FileResult result{ExitStatus::Done, report.Counts()};
        const std::vector<std::string> differences = plugin.Differences(context, reading);
        if (!reading.kind) {
            const std::string sentence = fmt::format("{}: {}", Shown(file), reading.findings.Sorted().front().what);
            context.console.Diagnose(sentence);
            if (reading.findings.Count(Kind("F-UNREADABLE")) > 0) {
                result.failure = sentence;
            }
        }
        context.console.Diagnose(differences);
        context.Print(report);
        if (!result.failure.empty()) {
            result.status = ExitStatus::Unread;
        } else if (report.HasProblem() || !differences.empty()) {
            result.status = ExitStatus::Failed;
        }
        return result;
    }

    ManyFiles m_files{ManyFiles::Purpose::Read};
    std::string m_kind;
    std::string m_severity = "note";
    std::vector<std::string> m_ignored;
    bool m_portable = false;
    bool m_list = false;
};

}  // namespace

std::unique_ptr<Command> MakeCheck() { return std::make_unique<Check>(); }

}  // namespace stmdcm
