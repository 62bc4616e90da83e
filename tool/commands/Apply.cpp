#include "tool/commands/Apply.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureFile.h"
#include "tool/commands/ChangeReport.h"
#include "tool/render/JsonRenderer.h"

namespace stmdcm {

/// What became of one capture.
struct Apply::Outcome {
    ChangeResult result;
    std::optional<std::string> failure;

    ExitStatus Status() const { return failure ? ExitStatus::Failed : StatusOf(result); }

    JsonRenderer::Json Json() const {
        JsonRenderer::Json json = ChangeReport::Json(result);
        json["failure"] = failure ? JsonRenderer::Json(*failure) : JsonRenderer::Json(nullptr);
        return json;
    }
};

namespace {

/// A failure counts for more than a doubt.
ExitStatus Worse(ExitStatus a, ExitStatus b) {
    return a == ExitStatus::Failed || b == ExitStatus::Failed ? ExitStatus::Failed : std::max(a, b);
}

/// A settings file's own text, which need not set every property; a capture's sets all.
std::string AppliedText(const Reading& source) {
    if (source.kind == ConfigurationKind::Capture) {
        return source.settings->Text();
    }
    const CaptureFile file(source.path, CaptureFile::Identifier::Optional);
    return file.Read(0, file.Size());
}

bool IsSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return std::filesystem::equivalent(a, b, ignored);
}

}  // namespace

void Apply::Declare(CLI::App& app) {
    app.add_option("source", m_source, "A settings file, or a capture")->required()->type_name("SETTINGS");
    app.add_option("captures", m_captures, "Captures to change, in place")->required()->type_name("CAPTURE");
    app.add_flag("--force", m_force, "Apply what can be read of a source that is not read whole");
    app.add_flag("--dry-run", m_dryRun, "Tell what would change, and write nothing");
    app.footer(
        "Properties that a settings file does not name stay as they are; the use cases are replaced. Each capture "
        "keeps\n"
        "its own object files, and its old configuration as history. Goes on after a capture that can't be changed, "
        "and\n"
        "ends with status 1 then.\n\nExample:\n  stmdcm apply good.tdf run1.tdf run2.tdf run3.tdf");
}

Apply::Outcome Apply::ApplyTo(const ConfigurationChange& change, const std::string& capture) const {
    Outcome outcome{{capture}, {}};
    try {
        if (IsSameFile(m_source, capture)) {
            throw Failure(fmt::format("{}: this is the file that the settings come from", capture));
        }
        constexpr auto kMissing = ConfigurationChange::Missing::IsMade;
        outcome.result = m_dryRun ? change.TryInCapture(capture, kMissing) : change.InCapture(capture, kMissing);
    } catch (const Failure& failure) {
        outcome.failure = failure.what();
    }
    return outcome;
}

ExitStatus Apply::Run(const Context& context) {
    const Reading source = Read(m_source);
    source.RequireSettings();
    RequireWhole(source, m_force);
    const std::vector<std::string> doubts = source.Doubts();
    const std::string text = AppliedText(source);
    const ConfigurationChange change([&](Settings& settings) { settings.Read(text); });
    ExitStatus status = doubts.empty() ? ExitStatus::Done : ExitStatus::Doubtful;
    JsonRenderer::Json document = JsonRenderer::Document("apply");
    document["source"] = m_source;
    document["source_doubts"] = doubts;
    document["dry_run"] = m_dryRun;
    document["captures"] = JsonRenderer::Json::array();
    ChangeReport::Diagnose(m_source, doubts, context.console);
    for (const std::string& capture : m_captures) {
        const Outcome outcome = ApplyTo(change, capture);
        document["captures"].push_back(outcome.Json());
        if (outcome.failure) {
            context.console.Diagnose(*outcome.failure);
        } else if (!context.options.json) {
            context.console.Print(ChangeReport::Text(outcome.result, context.console.Out()));
        }
        ChangeReport::Diagnose(outcome.result, context.console);
        status = Worse(status, outcome.Status());
    }
    if (context.options.json) {
        context.console.Print(JsonRenderer::Text(document));
    }
    return status;
}

}  // namespace stmdcm
