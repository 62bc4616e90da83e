#include <fmt/format.h>

#include <filesystem>

#include "stmdcm/Failure.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/PluginSession.h"
#include "stmdcm/reading/Words.h"
#include "stmdcm/recover/RecoveryCheck.h"
#include "stmdcm/recover/RecoveryPlanner.h"
#include "stmdcm/recover/RecoveryWriter.h"
#include "tool/commands/CommandTable.h"
#include "tool/output/GuardedHome.h"
#include "tool/output/OutputFile.h"
#include "tool/output/Progress.h"

namespace stmdcm {

namespace {

/// Tells what was recovered.
struct RecoverReport {
    const std::string& file;
    const std::string& output;
    const RecoveryPlan& plan;

    static std::string RemarkText(const Remark& remark, const Palette& palette) {
        const bool isLoss = remark.kind == RemarkKind::Dropped || remark.kind == RemarkKind::CutShort;
        return fmt::format(
            "  {}{}{}\n",
            remark.length == 0 ? "" : fmt::format("{}..{}: ", remark.offset, remark.offset + remark.length),
            remark.section.empty() ? "" : Shown(remark.section) + ": ",
            palette.Paint(isLoss ? Style::Bad : Style::Notable, remark.sentence));
    }

    std::string Text(const Palette& palette) const {
        std::string text = fmt::format("{} -> {} ({})\n  {} whole sections, {} repaired, {} dropped\n", Shown(file),
                                       Shown(output), SizeInWords(plan.ResultSize()), plan.wholeCount,
                                       plan.repaired.size(), SizeInWords(plan.droppedBytes));
        for (const Remark& remark : plan.remarks.Listed()) {
            text += RemarkText(remark, palette);
        }
        if (const std::size_t more = plan.remarks.Count() - plan.remarks.Listed().size(); more > 0) {
            text += fmt::format("  and {} more\n", more);
        }
        return text + (plan.IsGood()
                           ? palette.Paint(Style::Good, "GOOD") +
                                 ": every section is whole, check finds no error, and the plug-in loads it\n"
                           : palette.Paint(Style::Bad, "DOUBTFUL") + ": look at the list above before you use it\n");
    }

    Json Document() const {
        Json remarks = Json::array();
        for (const Remark& remark : plan.remarks.Listed()) {
            remarks.push_back({{"kind", RemarkId(remark.kind)},
                               {"offset", std::to_string(remark.offset)},
                               {"length", std::to_string(remark.length)},
                               {"section", JsonRenderer::OrNull(remark.section)},
                               {"finding", JsonRenderer::OrNull(remark.finding)},
                               {"message", remark.sentence}});
        }
        return JsonRenderer::Document("recover", {{"file", file},
                                                  {"output", output},
                                                  {"output_size", std::to_string(plan.ResultSize())},
                                                  {"good", plan.IsGood()},
                                                  {"whole_sections", std::to_string(plan.wholeCount)},
                                                  {"repaired_sections", std::to_string(plan.repaired.size())},
                                                  {"dropped_bytes", std::to_string(plan.droppedBytes)},
                                                  {"remark_count", std::to_string(plan.remarks.Count())},
                                                  {"remarks", remarks}});
    }
};

/// A torn or broken capture into a new one.
class Recover final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("FILE", m_file, "A torn or broken capture (.tdf); it is not changed")->required();
        app.add_option("-o,--output", m_output, "The new capture")->type_name("OUT")->required();
        app.add_flag("--force", m_force, "Overwrite the output file");
        app.add_flag("--progress", m_progress, "Tell the progress also where standard error is no terminal");
        app.footer(
            "Keeps every section that can be found byte for byte, retired ones too, and tells what was dropped, where, "
            "and what is doubtful. Ends with status 0 only when every section is whole, nothing was skipped, and the "
            "plug-in can load the result; with status 3 otherwise.\n\nExample:\n"
            "  stmdcm recover torn.tdf -o recovered.tdf");
    }

    ExitStatus Run(const Context& context) override {
        const CaptureFile file(m_file, CaptureFile::Identifier::Optional);
        OutputFile output(m_output, m_force, {m_file});
        RecoveryPlan plan = Plan(file);
        Write(file, plan, output);
        CheckLoading(context, output, plan);
        output.Commit();
        context.Print(RecoverReport{m_file, m_output, plan});
        return plan.IsGood() ? ExitStatus::Done : ExitStatus::Doubtful;
    }

  private:
    RecoveryPlan Plan(const CaptureFile& file) const {
        Progress progress("Searching", file.Size(), m_progress);
        RecoveryPlan plan = RecoveryPlanner(file, [&](std::uint64_t offset) { progress.Update(offset); }).Make();
        if (plan.SectionCount() == 0) {
            throw Failure(m_file, "no section was found, so nothing was written; is it a capture?");
        }
        return plan;
    }

    void Write(const CaptureFile& file, RecoveryPlan& plan, OutputFile& output) const {
        {
            Progress progress("Copying", plan.ResultSize(), m_progress);
            WriteRecovery(file, plan, Payloads::All, output, [&](std::uint64_t done) { progress.Update(done); });
        }
        output.Flush();
        CheckRecovery(output.ReadBackPath(), plan);
    }

    static void CheckLoading(const Context& context, const OutputFile& output, RecoveryPlan& plan) {
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

    std::string m_file;
    std::string m_output;
    bool m_force = false;
    bool m_progress = false;
};

}  // namespace

std::unique_ptr<Command> MakeRecover() { return std::make_unique<Recover>(); }

}  // namespace stmdcm
