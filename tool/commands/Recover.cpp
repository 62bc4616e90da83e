#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <vector>

#include "stmdcm/Failure.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/PluginSession.h"
#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/Reading.h"
#include "stmdcm/reading/Words.h"
#include "stmdcm/recover/RecoveryCheck.h"
#include "stmdcm/recover/RecoveryPlanner.h"
#include "stmdcm/recover/RecoveryWriter.h"
#include "tool/cli/ProgramText.h"
#include "tool/cli/ValueCheck.h"
#include "tool/commands/CommandTable.h"
#include "tool/output/GuardedHome.h"
#include "tool/output/OutputFile.h"
#include "tool/output/Progress.h"
#include "tool/reports/RecoverReport.h"

namespace stmdcm {

namespace {

/// A torn or broken capture into a new one.
class Recover final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("FILE", m_file, "A torn or broken capture (.tdf); it is not changed")->required();
        app.add_option("-o,--output", m_output, "The new capture (.tdf)")->type_name("OUT");
        app.add_flag("--plan", m_isPlan, "Tell the same, and write nothing");
        app.add_option("--split", m_splits,
                       "Take the section that begins at this offset out of the one around it; repeatable")
            ->type_name("OFFSET")
            ->check(WholeNumber())
            ->allow_extra_args(false);
        app.add_flag("--force", m_force, kOverwriteOutput);
        app.add_flag("--progress", m_progress, "Tell the progress also where standard error is no terminal");
        app.footer(
            "Keeps every section that can be found byte for byte, retired ones too, and tells what was dropped, where, "
            "and what is doubtful, such as sections within another one, which may have swallowed them. Ends with "
            "status 0 only when every section is whole, nothing was skipped, check finds no error in the result and "
            "the plug-in can load it; with status 3 otherwise.\n\nExample:\n"
            "  stmdcm recover --plan full.tdf\n"
            "  stmdcm recover full.tdf -o recovered.tdf");
    }

    ExitStatus Run(const Context& context) override {
        CheckRequest();
        const CaptureFile file(m_file, CaptureFile::Identifier::Optional);
        if (!m_output.empty()) {
            return RecoverInto(m_output, context, file);
        }
        return InGuardedHome({}, [&](const GuardedHome& room) {  // the output of a plan never gets its name
            return RecoverInto((room.Path() / "recovered.tdf").string(), context, file);
        });
    }

    bool LoadsPlugin() const override { return true; }

  private:
    ExitStatus RecoverInto(const std::string& path, const Context& context, const CaptureFile& file) const {
        OutputFile output(path, m_force, {m_file}, &file.File());
        RecoveryPlan plan = Plan(file);
        for (const std::string& lost : output.NotKept()) {
            plan.remarks.Add(RemarkKind::NotKept, lost);
        }
        Write(file, plan, output);
        CheckLoading(context, output, plan);
        if (!m_isPlan) {
            output.Commit();
        }
        const RecoverReport report{m_file, m_output, !m_isPlan, plan};
        context.Print(report);
        context.console.Diagnose(report.Doubts());
        return plan.IsGood() ? ExitStatus::Done : ExitStatus::Doubtful;
    }

    /// Before any work: no host takes a capture of another name.
    void CheckRequest() const {
        if (m_output.empty() && !m_isPlan) {
            throw Failure("recover needs -o OUT, or --plan", Failure::Kind::Request);
        }
        if (!m_output.empty()) {
            RequireCaptureName(m_output);
        }
    }

    RecoveryPlan Plan(const CaptureFile& file) const {
        Progress progress("Searching", file.Size(), m_progress);
        const auto onProgress = [&](std::uint64_t offset) { progress.Update(offset); };
        RecoveryPlan plan = RecoveryPlanner(file, onProgress, {m_splits.begin(), m_splits.end()}).Make();
        if (plan.SectionCount() == 0) {
            throw Failure(m_file, "no section was found, so nothing was written; is it a capture?");
        }
        return plan;
    }

    void Write(const CaptureFile& file, RecoveryPlan& plan, OutputFile& output) const {
        {
            Progress progress("Copying", plan.ResultSize(), m_progress);
            const Payloads payloads = m_isPlan ? Payloads::OfConfiguration : Payloads::All;
            WriteRecovery(file, plan, payloads, output, [&](std::uint64_t done) { progress.Update(done); });
        }
        output.Flush();
        output.ReadBack([&](const std::string& name) { CheckRecovery(name, plan); });
    }

    static void CheckLoading(const Context& context, const OutputFile& output, RecoveryPlan& plan) {
        std::string reason;
        try {
            const bool loads = InGuardedHome({}, [&](const GuardedHome& home) {
                const PluginSession session(home, context.options.plugin);
                const std::string name = session.WorkingFile("recovered.tdf");
                std::filesystem::create_symlink(output.ReadBackPath(), name);
                return Manager(session.plugin, "stmdcm").Load(name, Zu::Wep::Trace::TRACE_DATA_FILE_TDF);
            });
            if (loads) {
                return;
            }
            reason = "the plug-in can't load a configuration from the result";
        } catch (const Failure& failure) {
            reason = fmt::format("loading the result could not be tried: {}", failure.what());
        }
        plan.remarks.Add(RemarkKind::NotLoadable, reason);
    }

    std::string m_file;
    std::string m_output;
    std::vector<std::uint64_t> m_splits;
    bool m_isPlan = false;
    bool m_force = false;
    bool m_progress = false;
};

}  // namespace

std::unique_ptr<Command> MakeRecover() { return std::make_unique<Recover>(); }

}  // namespace stmdcm
