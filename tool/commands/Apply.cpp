#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "stmdcm/Failure.h"
#include "stmdcm/change/AppliedParts.h"
#include "tool/commands/ChangeReport.h"
#include "tool/commands/CommandTable.h"

namespace stmdcm {

namespace {

/// What became of one capture.
struct Outcome {
    ChangeResult result;
    std::optional<std::string> failure = {};

    ExitStatus Status() const { return failure ? ExitStatus::Failed : StatusOf(result); }

    Json Document() const {
        Json json = ChangeReport::Document(result);
        json["failure"] = JsonRenderer::OrNull(failure);
        return json;
    }
};

/// A failure counts for more than a doubt.
ExitStatus Worse(ExitStatus a, ExitStatus b) {
    return a == ExitStatus::Failed || b == ExitStatus::Failed ? ExitStatus::Failed : std::max(a, b);
}

bool IsSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return std::filesystem::equivalent(a, b, ignored);
}

/// The configuration of one file into many captures.
class Apply final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("source", m_source, "A settings file, or a capture")->required()->type_name("SETTINGS");
        app.add_option("captures", m_captures, "Captures to change, in place")->required()->type_name("CAPTURE");
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
        app.footer(
            "What the source does not name stays as it is. A settings file names the properties in it and, when it "
            "holds any, its use cases; a capture names everything, its program images (objects) too. Each capture "
            "keeps "
            "its old configuration as history. Goes on after a capture that can't be changed, and ends with status 1 "
            "then; with 3 when something was not read, or a changed value is one that no target has.\n\nExample:\n"
            "  stmdcm apply good.tdf run1.tdf run2.tdf run3.tdf --except objects");
    }

    ExitStatus Run(const Context& context) override {
        const Reading source = Read(m_source);
        source.RequireSettings();
        RequireWhole(source, m_force);
        const std::vector<std::string> doubts = source.Doubts();
        const ConfigurationChange change = WantedOf(source).ChangeTo(source);
        ExitStatus status = StatusOf(doubts);
        Json captures = Json::array();
        context.console.Diagnose(m_source, doubts);
        for (const std::string& capture : m_captures) {
            const Outcome outcome = ApplyTo(change, capture);
            if (context.options.json) {
                captures.push_back(outcome.Document());
            }
            if (outcome.failure) {
                context.console.Diagnose(*outcome.failure);
            } else if (!context.options.json) {
                context.console.Print(ChangeReport::Text(outcome.result, context.console.Out()));
            }
            ChangeReport::Diagnose(outcome.result, context.console);
            status = Worse(status, outcome.Status());
        }
        if (context.options.json) {
            context.console.Print(JsonRenderer::Text(JsonRenderer::Document(
                "apply",
                {{"source", m_source}, {"source_doubts", doubts}, {"dry_run", m_dryRun}, {"captures", captures}})));
        }
        return status;
    }

  private:
    AppliedParts WantedOf(const Reading& source) const {
        AppliedParts parts = AppliedParts::NamedBy(source);
        if (m_replace) {
            parts.usecases = true;
            parts.objects = false;
        }
        parts.Narrow(PartNames(m_only), PartNames(m_except));
        if (parts.IsEmpty()) {
            throw Failure(m_source, "there is nothing in it of what is asked for, so nothing to apply");
        }
        return parts;
    }

    Outcome ApplyTo(const ConfigurationChange& change, const std::string& capture) const try {
        if (IsSameFile(m_source, capture)) {
            throw Failure(capture, "this is the file that the settings come from");
        }
        constexpr auto kMissing = ConfigurationChange::Missing::IsMade;
        return {change.InCapture(capture, kMissing, m_dryRun ? ChangeMode::DryRun : ChangeMode::Write)};
    } catch (const Failure& failure) {
        return {{capture}, failure.what()};
    }

    std::string m_source;
    std::vector<std::string> m_captures;
    std::vector<std::string> m_only;
    std::vector<std::string> m_except;
    bool m_replace = false;
    bool m_dryRun = false;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeApply() { return std::make_unique<Apply>(); }

}  // namespace stmdcm
