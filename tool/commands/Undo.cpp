
#include "stmdcm/change/Undo.h"
#include "tool/commands/CommandTable.h"
#include "tool/many/ManyFiles.h"
#include "tool/reports/UndoReport.h"

namespace stmdcm {

namespace {

/// The configuration before the last change in force again, or that change.
class Undo final : public Command {
  public:
    void Declare(CLI::App& app) override {
        m_files.DeclareFiles(app, "CAPTURE", "Captures");
        app.add_flag("--redo", m_redo, "Bring the change back that an undo took out of force");
        app.add_flag("--dry-run", m_dryRun, "Tell what would be in force, and write nothing");
        m_files.DeclareOptions(app);
        app.footer(
            "Puts a copy of the configuration in force that was in force before the last change: of the section that "
            "was changed last, and of both where one change replaced both. Done once more it changes "
            "nothing: a capture whose last change is undone is as asked already, so the same command finishes what "
            "was stopped in the midst. To go further back use \"restore\". Ends with status 3 when parts of that "
            "configuration are not read.\n\nExample:\n"
            "  stmdcm undo capture.tdf\n"
            "  stmdcm undo --redo capture.tdf");
    }

    void Check() override { m_files.RequireAny("CAPTURE"); }

    ExitStatus Run(const Context& context) override {
        return m_files.Run(context, [this](const Context& own, const std::string& file) {
            const ChangeMode mode = m_dryRun ? ChangeMode::DryRun : ChangeMode::Write;
            const UndoDirection direction = m_redo ? UndoDirection::Redo : UndoDirection::Undo;
            const UndoReport report{file, direction, UndoLastChange(file, direction, mode)};
            own.Print(report);
            own.console.Diagnose(file, report.result.doubts);
            return FileResult{StatusOf(report.result.doubts),
                              {ChangeCount(report.HasChanges(), report.result.isWritten)}};
        });
    }

  private:
    ManyFiles m_files{ManyFiles::Purpose::Change};
    bool m_redo = false;
    bool m_dryRun = false;
};

}  // namespace

std::unique_ptr<Command> MakeUndo() { return std::make_unique<Undo>(); }

}  // namespace stmdcm
