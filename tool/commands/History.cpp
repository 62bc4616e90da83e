#include "stmdcm/change/History.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <optional>

#include "stmdcm/Failure.h"
#include "stmdcm/change/Prune.h"
#include "stmdcm/reading/Words.h"
#include "tool/cli/ProgramText.h"
#include "tool/cli/ValueCheck.h"
#include "tool/commands/ChangeReport.h"
#include "tool/commands/CommandTable.h"
#include "tool/many/ManyFiles.h"
#include "tool/output/OutputFile.h"
#include "tool/output/Progress.h"
#include "tool/render/Table.h"

namespace stmdcm {

namespace {

constexpr std::size_t kNamed = 2;

/// An entry and in what it differs from the one in force.
struct Row {
    const HistoryEntry& entry;
    std::optional<std::vector<Difference>> differences;

    std::string Words() const {
        if (entry.IsCurrent()) {
            return "";
        }
        if (!differences) {
            return "there is no current one";
        }
        if (differences->empty()) {
            return "the same";
        }
        std::vector<std::string> parts;
        for (std::size_t i = 0; i < std::min(kNamed, differences->size()); ++i) {
            const Difference& each = (*differences)[i];
            parts.push_back(fmt::format("{} {} / {}", ChangeReport::Item(each), Shown(each.left.value_or("not there")),
                                        Shown(each.right.value_or("not there"))));
        }
        if (differences->size() > kNamed) {
            parts.push_back(fmt::format("{} more", differences->size() - kNamed));
        }
        return fmt::format("{}", fmt::join(parts, ", "));
    }

    Json Document() const {
        return {{"number", entry.number},
                {"section", entry.name},
                {"state", entry.IsCurrent() ? "current" : SectionUseText(entry.section.use)},
                {"was_in_force", entry.IsCurrent() || entry.IsEarlier()},
                {"offset", std::to_string(entry.section.offset)},
                {"size", std::to_string(entry.section.PayloadLength())},
                {"differences", differences ? JsonRenderer::Differences(*differences) : Json(nullptr)}};
    }
};

/// Tells the configurations that a file holds.
struct HistoryReport {
    const std::string& file;
    std::vector<Row> rows;
    std::vector<std::string> doubts;
    std::optional<PrunePlan> prune = {};  ///< where that was asked for
    std::string output = {};              ///< where the rest was copied to; empty: nowhere

    bool IsDropped(const HistoryEntry& entry) const {
        const auto isSame = [&](const HistoryEntry& dropped) { return dropped.number == entry.number; };
        return prune && std::any_of(prune->dropped.begin(), prune->dropped.end(), isSame);
    }

    const char* State(const Row& row) const { return IsDropped(row.entry) ? "pruned" : row.entry.State(); }

    std::string PruneText() const {
        if (!prune) {
            return "";
        }
        const std::size_t pins = prune->droppedPins;
        return fmt::format("{}: without {} of them{}, {}{}\n", Shown(output.empty() ? file : output),
                           prune->dropped.size(), pins == 0 ? "" : " and " + Counted(pins, "old list") + " of pins",
                           SizeInWords(prune->freed), output.empty() ? " would be freed; -o writes a copy" : " less");
    }

    Json PruneDocument() const {
        Json numbers = Json::array();
        for (const HistoryEntry& entry : prune->dropped) {
            numbers.push_back(entry.number);
        }
        return {{"dropped", numbers},
                {"dropped_pins", prune->droppedPins},
                {"freed", std::to_string(prune->freed)},
                {"output", JsonRenderer::OrNull(output)}};
    }

    std::string Text(const Palette& palette) const {
        Table table;
        if (!rows.empty()) {
            table.AddRow({{"", Style::Quiet},
                          {"section", Style::Quiet},
                          {"state", Style::Quiet},
                          {"offset", Style::Quiet},
                          {"size", Style::Quiet},
                          {"where it differs from the current one (own / current)", Style::Quiet}});
        }
        for (const Row& row : rows) {
            table.AddRow({{std::to_string(row.entry.number)},
                          {row.entry.name},
                          {State(row), row.entry.IsCurrent() ? Style::Good : Style::Plain},
                          {std::to_string(row.entry.section.offset)},
                          {SizeInWords(row.entry.section.PayloadLength())},
                          {row.Words()}});
        }
        return palette.Paint(Style::Heading, fmt::format("{}: {} configuration sections", Shown(file), rows.size())) +
               "\n" + table.Text(palette, 2) + PruneText();
    }

    Json Document() const {
        Json configurations = Json::array();
        for (const Row& row : rows) {
            configurations.push_back(row.Document());
        }
        return JsonRenderer::Document("history", {{"file", file},
                                                  {"configurations", configurations},
                                                  {"prune", prune ? PruneDocument() : Json(nullptr)},
                                                  {"doubts", doubts}});
    }
};

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
        HistoryReport report{file, {}, RowDoubts(container)};
        for (const HistoryEntry& entry : history.Entries()) {
            report.rows.push_back({entry, history.Compare(entry)});
        }
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
