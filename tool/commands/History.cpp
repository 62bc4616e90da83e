#include "stmdcm/change/History.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "stmdcm/reading/Words.h"
#include "tool/commands/ChangeReport.h"
#include "tool/commands/CommandTable.h"
#include "tool/many/ManyFiles.h"
#include "tool/render/Table.h"

namespace stmdcm {

namespace {

constexpr std::size_t kNamed = 2;

/// An entry and in what it differs from the one in force.
struct Row {
    const HistoryEntry& entry;
    std::optional<std::vector<Difference>> differences;

    const char* State() const { return entry.IsCurrent() ? "current" : SectionUseText(entry.section.use); }

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
                {"state", State()},
                {"offset", std::to_string(entry.section.offset)},
                {"size", std::to_string(entry.section.PayloadLength())},
                {"differences", differences ? JsonRenderer::Differences(*differences) : Json(nullptr)}};
    }
};

/// Tells the configurations that a file holds.
struct HistoryReport {
    const std::string& file;
    std::vector<Row> rows;

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
                          {row.State(), row.entry.IsCurrent() ? Style::Good : Style::Plain},
                          {std::to_string(row.entry.section.offset)},
                          {SizeInWords(row.entry.section.PayloadLength())},
                          {row.Words()}});
        }
        return palette.Paint(Style::Heading, fmt::format("{}: {} configuration sections", Shown(file), rows.size())) +
               "\n" + table.Text(palette, 2);
    }

    Json Document() const {
        Json configurations = Json::array();
        for (const Row& row : rows) {
            configurations.push_back(row.Document());
        }
        return JsonRenderer::Document("history", {{"file", file}, {"configurations", configurations}});
    }
};

/// Earlier configurations in a capture.
class ShowHistory final : public Command {
  public:
    void Declare(CLI::App& app) override {
        m_files.DeclareFiles(app, "CAPTURE", "Captures");
        m_files.DeclareOptions(app);
        app.footer(
            "Every change in a capture leaves the old configuration in it as a retired section. The numbers stay the "
            "same; \"restore\" takes them. A shadowed section is hidden by an older one that is read.\n\nExample:\n"
            "  stmdcm history capture.tdf");
    }

    void Check() override { m_files.RequireAny("CAPTURE"); }

    ExitStatus Run(const Context& context) override { return m_files.Run(context, List); }

  private:
    static FileResult List(const Context& context, const std::string& file) {
        const Container container(file);
        const History history(container);
        HistoryReport report{file, {}};
        for (const HistoryEntry& entry : history.Entries()) {
            report.rows.push_back({entry, history.Compare(entry)});
        }
        context.Print(report);
        return {};
    }

    ManyFiles m_files{ManyFiles::Purpose::Read};
};

}  // namespace

std::unique_ptr<Command> MakeHistory() { return std::make_unique<ShowHistory>(); }

}  // namespace stmdcm
