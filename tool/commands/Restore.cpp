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

    std::string Text(const Palette& /*palette*/) const {
        return fmt::format("{}: configuration {} ({}) is {}\n", Shown(file), number, result.restored.name,
                           result.isWritten ? "in force again" : "what is in force, nothing was written");
    }

    Json Document() const {
        return JsonRenderer::Document(
            "restore",
            {{"file", file}, {"number", number}, {"section", result.restored.name}, {"written", result.isWritten}});
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
        app.footer(
            "Appends a copy of that configuration, byte for byte, and retires the current one: so a restore can be "
            "undone by another. Object files (DCM_COMMON) and settings (STMDECODERINFO) are restored "
            "apart.\n\nExample:\n"
            "  stmdcm restore capture.tdf 2");
    }

    ExitStatus Run(const Context& context) override {
        context.Print(RestoreReport{m_file, m_number, RestoreConfiguration(m_file, m_number)});
        return ExitStatus::Done;
    }

  private:
    std::string m_file;
    std::size_t m_number = 0;
};

}  // namespace

std::unique_ptr<Command> MakeRestore() { return std::make_unique<Restore>(); }

}  // namespace stmdcm
