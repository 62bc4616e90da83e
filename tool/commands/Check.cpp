#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "stmdcm/Failure.h"
#include "stmdcm/pins/ImageExaminer.h"
#include "stmdcm/reading/Portability.h"
#include "stmdcm/reading/Verdict.h"
#include "stmdcm/reading/Words.h"
#include "tool/cli/ValueCheck.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/NextCommand.h"
#include "tool/commands/OtherPlugin.h"
#include "tool/many/ManyFiles.h"
#include "tool/output/InputFile.h"
#include "tool/render/Table.h"

namespace stmdcm {

namespace {

constexpr Severity kSeverities[] = {Severity::Error, Severity::Warning, Severity::Note};

Severity ToSeverity(const std::string& name) {
    return *std::find_if(std::begin(kSeverities), std::end(kSeverities),
                         [&](Severity severity) { return name == SeverityName(severity); });
}

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

std::vector<std::string> KindNames() {
    std::vector<std::string> names;
    for (const FindingKind& kind : kFindingKinds) {
        names.emplace_back(kind.id);
    }
    return names;
}

bool IsPinned(const ObjectFile& file) { return file.pin.has_value(); }

/// Tells the kinds of findings.
struct KindList {
    static std::string Text(const Palette& palette) {
        Table table;
        for (const FindingKind& kind : kFindingKinds) {
            table.AddRow({{kind.id}, {SeverityName(kind.severity), StyleOf(kind)}, {kind.meaning}});
        }
        return table.Text(palette, 0);
    }

    static Json Document() {
        Json document = JsonRenderer::Document("check");
        for (const FindingKind& kind : kFindingKinds) {
            document["kinds"].push_back(
                {{"id", kind.id}, {"severity", SeverityName(kind.severity)}, {"meaning", kind.meaning}});
        }
        return document;
    }
};

/// Tells what was found in a file.
struct CheckReport {
    const Reading& file;
    Severity least;                           ///< findings below are left out, in the counts too
    const std::vector<std::string>& ignored;  ///< identifiers of findings that are, too

    bool IsShown(const FindingKind& kind) const {
        return kind.severity >= least && std::find(ignored.begin(), ignored.end(), kind.id) == ignored.end();
    }

    /// How many of each severity there are.
    std::map<Severity, std::size_t> Numbers() const {
        std::map<Severity, std::size_t> numbers;
        for (const FindingKind& kind : kFindingKinds) {
            if (const std::size_t count = file.findings.Count(kind); count > 0 && IsShown(kind)) {
                numbers[kind.severity] += count;
            }
        }
        return numbers;
    }

    /// Whether anything that is shown is more than a note.
    bool HasProblem() const {
        const auto numbers = Numbers();
        return numbers.contains(Severity::Error) || numbers.contains(Severity::Warning);
    }

    std::vector<Count> Counts() const {
        auto numbers = Numbers();
        std::vector<Count> counts;
        counts.reserve(std::size(kSeverities));
        for (const Severity severity : kSeverities) {
            counts.push_back({SeverityName(severity), numbers[severity], true});
        }
        return counts;
    }

    std::vector<Finding> Shown() const {
        std::vector<Finding> findings = file.findings.Sorted();
        std::erase_if(findings, [&](const Finding& finding) { return !IsShown(*finding.kind); });
        return findings;
    }

    /// Calls `tell` with each kind of which there are more than are told, and how many more.
    template <class Tell>
    void EachUntold(Tell tell) const {
        for (const FindingKind& kind : kFindingKinds) {
            const std::size_t count = file.findings.Count(kind);
            if (IsShown(kind) && count > Findings::kMaxOfKind) {
                tell(kind, count - Findings::kMaxOfKind);
            }
        }
    }

    std::string Text(const Palette& palette) const {
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

    Json FileDocument() const {
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

    Json Document() const {
        return JsonRenderer::Document("check", {{"files", Json::array({FileDocument()})}, {"problems", HasProblem()}});
    }
};

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
