#include "tool/commands/ShowHistory.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "stmdcm/change/History.h"
#include "stmdcm/reading/Words.h"
#include "tool/commands/ChangeReport.h"
#include "tool/output/Progress.h"
#include "tool/render/JsonRenderer.h"
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
            parts.push_back(fmt::format("{} {} / {}", ChangeReport::Item(each), each.left.value_or("not there"),
                                        each.right.value_or("not there")));
        }
        if (differences->size() > kNamed) {
            parts.push_back(fmt::format("{} more", differences->size() - kNamed));
        }
        return fmt::format("{}", fmt::join(parts, ", "));
    }
};

std::string Text(const std::string& file, const std::vector<Row>& rows, const Palette& palette) {
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
        table.AddRow({{fmt::format("{}", row.entry.number)},
                      {row.entry.name},
                      {row.State(), row.entry.IsCurrent() ? Style::Good : Style::Plain},
                      {fmt::format("{}", row.entry.section.offset)},
                      {SizeInWords(row.entry.section.PayloadLength())},
                      {row.Words()}});
    }
    return palette.Paint(Style::Heading, fmt::format("{}: {} configuration sections", file, rows.size())) + "\n" +
           table.Text(palette, 2);
}

JsonRenderer::Json Json(const std::string& file, const std::vector<Row>& rows) {
    JsonRenderer::Json document = JsonRenderer::Document("history");
    document["file"] = file;
    document["configurations"] = JsonRenderer::Json::array();
    for (const Row& row : rows) {
        document["configurations"].push_back(
            {{"number", row.entry.number},
             {"section", row.entry.name},
             {"state", row.State()},
             {"offset", fmt::format("{}", row.entry.section.offset)},
             {"size", fmt::format("{}", row.entry.section.PayloadLength())},
             {"differences",
              row.differences ? JsonRenderer::Differences(*row.differences) : JsonRenderer::Json(nullptr)}});
    }
    return document;
}

}  // namespace

void ShowHistory::Declare(CLI::App& app) {
    app.add_option("file", m_file, "A capture")->required()->type_name("CAPTURE");
    app.footer(
        "Every change in a capture leaves the old configuration in it as a retired section. The numbers stay the "
        "same;\n"
        "\"restore\" takes them. A shadowed section is hidden by an older one that is read.\n\nExample:\n"
        "  stmdcm history capture.tdf");
}

ExitStatus ShowHistory::Run(const Context& context) {
    const Container container(m_file);
    const History history(container);
    std::vector<Row> rows;
    for (const HistoryEntry& entry : history.Entries()) {
        rows.push_back({entry, history.Compare(entry)});
    }
    context.console.Print(context.options.json ? JsonRenderer::Text(Json(m_file, rows))
                                               : Text(m_file, rows, context.console.Out()));
    return ExitStatus::Done;
}

}  // namespace stmdcm
