#include <fmt/format.h>
#include <fmt/ranges.h>

#include "stmdcm/change/History.h"
#include "stmdcm/reading/Words.h"
#include "tool/commands/ChangeReport.h"
#include "tool/commands/CommandTable.h"
#include "tool/many/ManyFiles.h"

namespace stmdcm {

namespace {

/// Tells what is in force again, and what that changes.
struct UndoReport {
    const std::string& file;
    UndoResult result;

    std::string Text(const Palette& palette) const {
        std::vector<std::string> names;
        for (const HistoryEntry& entry : result.restored) {
            names.push_back(fmt::format("configuration {} ({})", entry.number, entry.name));
        }
        const bool isOne = names.size() == 1;
        const char* outcome =
            result.isWritten ? (isOne ? "is in force again" : "are in force again") : "would be in force again";
        return fmt::format("{}: {} {}\n", Shown(file), fmt::join(names, " and "), outcome) +
               ChangeReport::Changes(result.changes, palette);
    }

    Json Document() const {
        Json restored = Json::array();
        for (const HistoryEntry& entry : result.restored) {
            restored.push_back({{"number", entry.number}, {"section", entry.name}});
        }
        return JsonRenderer::Document("undo", {{"file", file},
                                               {"restored", restored},
                                               {"changes", JsonRenderer::Differences(result.changes)},
                                               {"written", result.isWritten},
                                               {"doubts", result.doubts}});
    }
};

/// The configuration before the last change in force again.
class Undo final : public Command {
  public:
    void Declare(CLI::App& app) override {
        m_files.DeclareFiles(app, "CAPTURE", "Captures");
        app.add_flag("--dry-run", m_dryRun, "Tell what would be in force, and write nothing");
        m_files.DeclareOptions(app);
        app.footer(
            "Puts a copy of the configuration in force that \"history\" shows as the youngest retired one of the "
            "section that was changed last, and of both where one change replaced both. Done once more it brings the "
            "change back; to go further use \"restore\". Ends with status 3 when parts of that configuration are "
            "not read.\n\nExample:\n"
            "  stmdcm undo capture.tdf");
    }

    void Check() override { m_files.RequireAny("CAPTURE"); }

    ExitStatus Run(const Context& context) override {
        return m_files.Run(context, [this](const Context& own, const std::string& file) {
            const ChangeMode mode = m_dryRun ? ChangeMode::DryRun : ChangeMode::Write;
            const UndoReport report{file, UndoLastChange(file, mode)};
            own.Print(report);
            own.console.Diagnose(file, report.result.doubts);
            return FileResult{StatusOf(report.result.doubts), {ChangeCount(true, report.result.isWritten)}};
        });
    }

  private:
    ManyFiles m_files{ManyFiles::Purpose::Change};
    bool m_dryRun = false;
};

}  // namespace

std::unique_ptr<Command> MakeUndo() { return std::make_unique<Undo>(); }

}  // namespace stmdcm
