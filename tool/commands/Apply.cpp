#include <optional>

#include "stmdcm/Failure.h"
#include "stmdcm/change/AppliedSource.h"
#include "tool/commands/ChangeOutcome.h"
#include "tool/commands/CommandTable.h"
#include "tool/many/ManyFiles.h"
#include "tool/reports/ChangeReport.h"

namespace stmdcm {

namespace {

/// What became of one capture.
struct Outcome {
    ChangeResult result;
    std::optional<std::string> failure = {};
};

/// The configuration of one file into many captures.
class Apply final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("source", m_source, "A settings file, or a capture")->required()->type_name("SETTINGS");
        m_captures.DeclareFiles(app, "CAPTURE", "Captures to change, in place");
        const auto addParts = [&](const char* name, std::vector<std::string>& parts, const char* what) {
            return app.add_option(name, parts, what)->type_name("PART")->delimiter(',')->allow_extra_args(false);
        };
        CLI::Option* replace =
            app.add_flag("--replace", m_replace, "Remove use cases for which there are none in SETTINGS; keep images");
        addParts("--only", m_only, "Apply these alone: properties, usecases, objects, a property's name")
            ->excludes(replace);
        addParts("--except", m_except, "Apply all but these")->excludes(replace);
        app.add_flag("--force", m_force, "Apply what can be read of a source that is not read whole");
        app.add_flag("--dry-run", m_dryRun, "Tell what would change, and write nothing");
        m_captures.DeclareOptions(app);
        app.footer(
            "What the source does not name stays as it is. A settings file names the properties in it and, when it "
            "holds any, its use cases; a capture names everything, its program images (objects) too. Each capture "
            "keeps "
            "its old configuration as history. Goes on after a capture that can't be changed, and ends with status 1 "
            "then; with 3 when something was not read, or a changed value is one that no target has.\n\nExample:\n"
            "  stmdcm apply good.tdf run1.tdf run2.tdf run3.tdf --except objects");
    }

    void Check() override { m_captures.RequireAny("CAPTURE"); }

    ExitStatus Run(const Context& context) override {
        const AppliedSource source(m_source, {m_only, m_except, m_replace, m_force});
        context.console.Diagnose(m_source, source.Doubts());
        const ExitStatus status = m_captures.Run(context, [&](const Context& own, const std::string& capture) {
            return Tell(own, ApplyTo(source, capture), source.Doubts());
        });
        return status == ExitStatus::Done ? StatusOf(source.Doubts()) : status;
    }

  private:
    FileResult Tell(const Context& context, const Outcome& outcome, const std::vector<std::string>& doubts) const {
        const ChangeResult& result = outcome.result;
        context.Print(ApplyReport{m_source, doubts, m_dryRun, result, outcome.failure});
        if (outcome.failure) {
            context.console.Diagnose(*outcome.failure);
            return {ExitStatus::Failed, {}, *outcome.failure};
        }
        Diagnose(result, context.console);
        return ResultOf(result);
    }

    Outcome ApplyTo(const AppliedSource& source, const std::string& capture) const try {
        return {source.ApplyTo(capture, m_dryRun ? ChangeMode::DryRun : ChangeMode::Write)};
    } catch (const Failure& failure) {
        return {{capture}, failure.what()};
    }

    std::string m_source;
    ManyFiles m_captures{ManyFiles::Purpose::Change};
    std::vector<std::string> m_only;
    std::vector<std::string> m_except;
    bool m_replace = false;
    bool m_dryRun = false;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeApply() { return std::make_unique<Apply>(); }

}  // namespace stmdcm
