#include "stmdcm/change/History.h"

#include <algorithm>
#include <optional>

#include "stmdcm/Failure.h"
#include "stmdcm/change/Prune.h"
#include "stmdcm/reading/Reading.h"
#include "tool/cli/ProgramText.h"
#include "tool/cli/ValueCheck.h"
#include "tool/commands/CommandTable.h"
#include "tool/many/ManyFiles.h"
#include "tool/output/OutputFile.h"
#include "tool/output/Progress.h"
#include "tool/reports/HistoryReport.h"

namespace stmdcm {

namespace {

/// Earlier configurations in a capture.
class ShowHistory final : public Command {
  public:
    void Declare(CLI::App& app) override {
        m_files.DeclareFiles(app, "CAPTURE", "Captures");
        CLI::Option* prune =
            app.add_option("--prune", m_keep, "Tell what is freed by leaving out all but the youngest N retired ones")
                ->type_name("N")
                ->check(WholeNumber());
        CLI::Option* output = app.add_option("-o,--output", m_output, "Write a new capture without those")
                                  ->type_name("OUT")
                                  ->needs(prune);
        app.add_flag("--force", m_force, kOverwriteOutput)->needs(output);
        m_files.DeclareOptions(app);
        app.footer(
            "Every change in a capture leaves the old configuration in it as a retired section. The numbers stay the "
            "same; \"restore\" takes them. A shadowed section is hidden by an older one that is read; when a change "
            "retires that, it was \"never in force\", and neither was what an interrupted change left. --prune "
            "counts the retired ones of each section apart, those of the pins too, leaves out all that never were in "
            "force, and never changes the capture itself. Ends with status 3 where the row of sections is "
            "broken.\n\nExample:\n"
            "  stmdcm history capture.tdf\n"
            "  stmdcm history --prune 3 capture.tdf -o smaller.tdf");
    }

    void Check() override { m_files.RequireAny("CAPTURE"); }

    ExitStatus Run(const Context& context) override {
        if (!m_output.empty() && (m_files.CountNamed() != 1 || m_files.HasList())) {
            throw Failure("-o is for one capture", Failure::Kind::Request);
        }
        if (!m_output.empty()) {
            RequireCaptureName(m_output);
        }
        return m_files.Run(context, [this](const Context& own, const std::string& file) { return List(own, file); });
    }

  private:
    FileResult List(const Context& context, const std::string& file) const {
        const Container container(file);
        const History history(container);
        HistoryReport report = HistoryReport::Of(file, container, history);
        std::vector<std::string> notKept;
        if (m_keep) {
            report.prune = PlanPrune(container, history, *m_keep);
        }
        if (!m_output.empty()) {
            notKept = Write(container, *report.prune);
            report.output = m_output;
        }
        context.Print(report);
        context.console.Diagnose(file, report.doubts);
        context.console.Diagnose(m_output, notKept);
        return {std::max(StatusOf(report.doubts), StatusOf(notKept))};
    }

    /// Gives what of a file that was there is not kept.
    std::vector<std::string> Write(const Container& container, const PrunePlan& plan) const {
        OutputFile output(m_output, m_force, {container.Path()}, &container.File().File());
        {
            Progress progress("Copying", plan.Size(), false);
            CopyPruned(container, plan, output, [&](std::uint64_t done) { progress.Update(done); });
        }
        output.Flush();
        const Reading before = Read(container);
        const Reading after = output.ReadBack([](const std::string& path) { return Read(Container(path)); });
        if (!Compare(before.configuration, after.configuration).empty()) {
            throw Failure(container.Path(), "a copy without them would not read as the capture does; none was written");
        }
        output.Commit();
        return output.NotKept();
    }

    ManyFiles m_files{ManyFiles::Purpose::Read};
    std::optional<std::size_t> m_keep;
    std::string m_output;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeHistory() { return std::make_unique<ShowHistory>(); }

}  // namespace stmdcm
