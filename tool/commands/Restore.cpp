#include <fmt/format.h>

#include "stmdcm/change/History.h"
#include "stmdcm/reading/Words.h"
#include "tool/cli/ValueCheck.h"
#include "tool/commands/CommandTable.h"
#include "tool/many/ManyFiles.h"
#include "tool/reports/RestoreReport.h"

namespace stmdcm {

namespace {

/// An earlier configuration of a capture in force again.
class Restore final : public Command {
  public:
    void Declare(CLI::App& app) override {
        m_files.DeclareFiles(app, "CAPTURE", "Captures");
        app.add_option("number", m_number, "The configuration's number in each of them, as \"history\" shows it")
            ->type_name("NUMBER");
        app.add_flag("--dry-run", m_dryRun, "Tell what would be in force, and write nothing");
        m_files.DeclareOptions(app);
        app.footer(
            "Appends a copy of that configuration, byte for byte, and retires the current one: so a restore can be "
            "undone by another. Object files (DCM_COMMON) and settings (STMDECODERINFO) are restored "
            "apart. Ends with status 3 when parts of that configuration are not read; standard error says "
            "which.\n\nExample:\n"
            "  stmdcm restore capture.tdf 2");
    }

    void Check() override {
        const std::size_t last = m_files.CountNamed() - 1;
        const auto words = m_files.TakeOthers([&](const std::string&, std::size_t index) { return index == last; });
        if (words.empty() || (!m_files.IsAny() && !WholeNumber()(words[0]).empty())) {
            throw CLI::RequiredError(words.empty() ? "CAPTURE" : "NUMBER");
        }
        if (std::string wrong = WholeNumber()(words[0]); !wrong.empty()) {
            throw CLI::ValidationError("NUMBER", wrong);
        }
        m_files.RequireAny("CAPTURE");
        m_number = std::stoull(words[0]);
    }

    ExitStatus Run(const Context& context) override {
        return m_files.Run(context, [this](const Context& own, const std::string& file) {
            const ChangeMode mode = m_dryRun ? ChangeMode::DryRun : ChangeMode::Write;
            const RestoreReport report{file, m_number, RestoreConfiguration(file, m_number, mode)};
            own.Print(report);
            own.console.Diagnose(file, report.result.doubts);
            return FileResult{StatusOf(report.result.doubts),
                              {ChangeCount(report.result.hasChanges, report.result.isWritten)}};
        });
    }

  private:
    ManyFiles m_files{ManyFiles::Purpose::Change};
    std::size_t m_number = 0;
    bool m_dryRun = false;
};

}  // namespace

std::unique_ptr<Command> MakeRestore() { return std::make_unique<Restore>(); }

}  // namespace stmdcm
