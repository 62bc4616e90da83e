#include "stmdcm/change/Assignment.h"
#include "stmdcm/change/PropertyChange.h"
#include "tool/commands/ChangeOutcome.h"
#include "tool/commands/CommandTable.h"
#include "tool/many/ManyFiles.h"
#include "tool/reports/ChangeReport.h"

namespace stmdcm {

namespace {

constexpr int kMostAssignments = 10'000;

/// Changes properties of a capture, in place, or of a settings file.
class Set final : public Command {
  public:
    void Declare(CLI::App& app) override {
        m_files.DeclareFiles(app, "FILE", "Captures, and settings files");
        app.add_option("assignments", m_assignments,
                       "What to set; clocks may be written as 200M or 1.25GHz, flags as yes or no")
            ->expected(0, kMostAssignments)
            ->type_name("NAME=VALUE");
        app.add_flag("--force", m_force, "Add to a settings file, too, what stands in it where it is not read");
        app.add_flag("--dry-run", m_dryRun, "Tell what would change, and write nothing");
        m_files.DeclareOptions(app);
        app.footer(
            "A capture is changed in place: nothing of it is copied, and the old configuration stays in it, see "
            "\"history\" and \"restore\". Ends with status 3 when the old configuration had parts that no reader "
            "reads, which are not in the new one, and for a value that no target has. A settings file keeps every line "
            "as it is, but for the values that change; a "
            "property that it does not name gets a line behind the others. Owner, mode, ACL and attributes stay, and "
            "its other hard links keep the old text.\n\nExample:\n"
            "  stmdcm set capture.tdf STM_DTC_target_clock_hz=1.25GHz STM_VornLib_Import=yes");
    }

    /// The first word of several is a file, whatever it looks like, unless a list names them.
    void Check() override {
        const bool isAlone = m_files.CountNamed() == 1;
        m_assignments = m_files.TakeOthers([&](const std::string& word, std::size_t index) {
            return (index > 0 || isAlone || m_files.HasList()) && Assignment::LooksLikeOne(word);
        });
        m_files.RequireAny("FILE");
        if (m_assignments.empty()) {
            throw CLI::RequiredError("NAME=VALUE");
        }
    }

    ExitStatus Run(const Context& context) override {
        const PropertyChange change(m_assignments);
        const ChangeMode mode = m_dryRun ? ChangeMode::DryRun : ChangeMode::Write;
        return m_files.Run(context, [&](const Context& own, const std::string& file) {
            const ChangeResult result = change.In(file, m_force, mode);
            own.Print(SetReport{result});
            Diagnose(result, own.console);
            return ResultOf(result);
        });
    }

  private:
    ManyFiles m_files{ManyFiles::Purpose::Change};
    std::vector<std::string> m_assignments;
    bool m_force = false;
    bool m_dryRun = false;
};

}  // namespace

std::unique_ptr<Command> MakeSet() { return std::make_unique<Set>(); }

}  // namespace stmdcm
