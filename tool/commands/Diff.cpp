
#include <algorithm>

#include "stmdcm/reading/Reading.h"
#include "tool/commands/CommandTable.h"
#include "tool/many/ManyFiles.h"
#include "tool/output/InputFile.h"
#include "tool/reports/DiffReport.h"

namespace stmdcm {

namespace {

/// What is different in the configurations of two files.
class Diff final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("LEFT", m_left, "A capture (.tdf) or a settings file; - is standard input")->required();
        m_files.DeclareFiles(app, "RIGHT", "Others, each of which is compared with LEFT");
        m_files.DeclareOptions(app);
        app.footer(
            "Use cases are matched by job and module, object files by name. Settings files have no object files: with "
            "one of them these are not compared. Ends with status 0 when nothing differs, 1 when something does, 3 "
            "when nothing differs in what could be read, 4 when a file can't be loaded.\n\nExample:\n"
            "  stmdcm diff before.tdf after.tdf");
    }

    void Check() override { m_files.RequireAny("RIGHT"); }

    ExitStatus Run(const Context& context) override {
        const Reading left = InputFile(m_left).Read();
        left.RequireLoaded();
        return m_files.Run(context, [&](const Context& own, const std::string& file) {
            const Reading right = InputFile(file).Read();
            right.RequireLoaded();
            const DiffReport report{left, right, own.isOneOfMany};
            own.Print(report);
            own.console.Diagnose(left.Sentences());
            own.console.Diagnose(right.Sentences());
            return FileResult{StatusOf(report), {{report.IsEqual() ? "equal" : "different"}}};
        });
    }

    ExitStatus FailureStatus() const override { return ExitStatus::Unread; }

  private:
    static ExitStatus StatusOf(const DiffReport& report) {
        return report.IsEqual()
                   ? std::max(stmdcm::StatusOf(report.left.Doubts()), stmdcm::StatusOf(report.right.Doubts()))
                   : ExitStatus::Failed;
    }

    std::string m_left;
    ManyFiles m_files{ManyFiles::Purpose::Read};
};

}  // namespace

std::unique_ptr<Command> MakeDiff() { return std::make_unique<Diff>(); }

}  // namespace stmdcm
