#include "tool/commands/Recover.h"

#include <fmt/format.h>

#include <filesystem>

#include "stmdcm/Failure.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/PluginSession.h"
#include "stmdcm/recover/RecoveryCheck.h"
#include "stmdcm/recover/RecoveryPlanner.h"
#include "stmdcm/recover/RecoveryWriter.h"
#include "tool/commands/RecoverReport.h"
#include "tool/output/GuardedHome.h"

namespace stmdcm {

void Recover::Declare(CLI::App& app) {
    app.add_option("FILE", m_file, "A torn or broken capture (.tdf); it is not changed")->required();
    app.add_option("-o,--output", m_output, "The new capture")->type_name("OUT")->required();
    app.add_flag("--force", m_force, "Overwrite the output file");
    app.add_flag("--progress", m_progress, "Tell the progress also where standard error is no terminal");
    app.footer(
        "Keeps every section that can be found byte for byte, retired ones too, and tells what was dropped, where, "
        "and\n"
        "what is doubtful. Ends with status 0 only when every section is whole, nothing was skipped, and the plug-in\n"
        "can load the result; with status 3 otherwise.\n\nExample:\n  stmdcm recover torn.tdf -o recovered.tdf");
}

ExitStatus Recover::Run(const Context& context) {
    const CaptureFile file(m_file, CaptureFile::Identifier::Optional);
    OutputFile output(m_output, m_force, {m_file});
    RecoveryPlan plan = Plan(file);
    Write(file, plan, output);
    CheckLoading(context, output, plan);
    output.Commit();
    const RecoverReport report(m_file, m_output, plan);
    context.console.Print(context.options.json ? report.Json() : report.Text(context.console.Out()));
    return plan.IsGood() ? ExitStatus::Done : ExitStatus::Doubtful;
}

Progress::Show Recover::ProgressShow() const {
    return m_progress ? Progress::Show::Always : Progress::Show::OnTerminal;
}

RecoveryPlan Recover::Plan(const CaptureFile& file) const {
    Progress progress("Searching", file.Size(), ProgressShow());
    RecoveryPlan plan = RecoveryPlanner(file, [&](std::uint64_t offset) { progress.Update(offset); }).Make();
    if (plan.SectionCount() == 0) {
        throw Failure(fmt::format("{}: no section was found, so nothing was written; is it a capture?", m_file));
    }
    return plan;
}

void Recover::Write(const CaptureFile& file, RecoveryPlan& plan, OutputFile& output) const {
    {
        Progress progress("Copying", plan.ResultSize(), ProgressShow());
        WriteRecovery(file, plan, output, [&](std::uint64_t done) { progress.Update(done); });
    }
    output.Flush();
    const CaptureFile result(output.ReadBackPath());
    Zu::Wep::Trace::FileSectionSource source(result.File());
    CheckRecovery(source, result.Size(), plan);
}

void Recover::CheckLoading(const Context& context, const OutputFile& output, RecoveryPlan& plan) const {
    std::string reason;
    try {
        const GuardedHome home;
        const PluginSession session(home, context.options.plugin);
        const std::string name = session.WorkingFile("recovered.tdf");
        std::filesystem::create_symlink(output.ReadBackPath(), name);
        if (Manager(session.plugin, "stmdcm").Load(name, Zu::Wep::Trace::TRACE_DATA_FILE_TDF)) {
            return;
        }
        reason = "the plug-in can't load a configuration from the result";
    } catch (const Failure& failure) {
        reason = fmt::format("loading the result could not be tried: {}", failure.what());
    }
    plan.remarks.Add({RemarkKind::NotLoadable, 0, 0, {}, reason});
}

}  // namespace stmdcm
