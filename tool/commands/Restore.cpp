#include <fmt/format.h>

#include "stmdcm/change/History.h"
#include "stmdcm/reading/Words.h"
#include "tool/cli/ValueCheck.h"
#include "tool/commands/CommandTable.h"

namespace stmdcm {

namespace {

/// Tells what is in force now.
struct RestoreReport {
    const std::string& file;
    std::size_t number;
    RestoreResult result;

    const char* Outcome() const {
        if (!result.hasChanges) {
            return "is what is in force, nothing was written";
        }
        return result.isWritten ? "is in force again" : "would be in force again";
    }

    std::string Text(const Palette& /*palette*/) const {
        return fmt::format("{}: configuration {} ({}) {}\n", Shown(file), number, result.restored.name, Outcome());
    }

    Json Document() const {
        return JsonRenderer::Document("restore", {{"file", file},
                                                  {"number", number},
                                                  {"section", result.restored.name},
                                                  {"changed", result.hasChanges},
                                                  {"written", result.isWritten},
                                                  {"doubts", result.doubts}});
    }
};

/// An earlier configuration of a capture in force again.
class Restore final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("file", m_file, "A capture")->required()->type_name("CAPTURE");
        app.add_option("number", m_number, "The configuration's number, as \"history\" shows it")
            ->required()
            ->type_name("N")
            ->check(WholeNumber());
        app.add_flag("--dry-run", m_dryRun, "Tell what would be in force, and write nothing");
        app.footer(
            "Appends a copy of that configuration, byte for byte, and retires the current one: so a restore can be "
            "undone by another. Object files (DCM_COMMON) and settings (STMDECODERINFO) are restored "
            "apart. Ends with status 3 when parts of that configuration are not read; standard error says "
            "which.\n\nExample:\n"
            "  stmdcm restore capture.tdf 2");
    }

    ExitStatus Run(const Context& context) override {
        const ChangeMode mode = m_dryRun ? ChangeMode::DryRun : ChangeMode::Write;
        const RestoreReport report{m_file, m_number, RestoreConfiguration(m_file, m_number, mode)};
        context.Print(report);
        context.console.Diagnose(m_file, report.result.doubts);
        return StatusOf(report.result.doubts);
    }

  private:
    std::string m_file;
    std::size_t m_number = 0;
    bool m_dryRun = false;
};

}  // namespace

std::unique_ptr<Command> MakeRestore() { return std::make_unique<Restore>(); }

}  // namespace stmdcm
