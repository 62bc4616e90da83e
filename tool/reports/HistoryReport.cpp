#include "tool/reports/HistoryReport.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <algorithm>

#include "stmdcm/reading/Reading.h"
#include "stmdcm/reading/Words.h"
#include "tool/render/Table.h"
#include "tool/reports/ChangeReport.h"

namespace stmdcm {

namespace {

constexpr std::size_t kNamed = 2;

}  // namespace

std::string HistoryRow::Words() const {
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

Json HistoryRow::Document() const {
    return {{"number", entry.number},
            {"section", entry.name},
            {"state", entry.IsCurrent() ? "current" : SectionUseText(entry.section.use)},
            {"was_in_force", entry.IsCurrent() || entry.IsEarlier()},
            {"offset", std::to_string(entry.section.offset)},
            {"size", std::to_string(entry.section.PayloadLength())},
            {"differences", differences ? JsonRenderer::Differences(*differences) : Json(nullptr)}};
}

HistoryReport HistoryReport::Of(const std::string& file, const Container& container, const History& history) {
    HistoryReport report{file, {}, RowDoubts(container)};
    for (const HistoryEntry& entry : history.Entries()) {
        report.rows.push_back({entry, history.Compare(entry)});
    }
    return report;
}

bool HistoryReport::IsDropped(const HistoryEntry& entry) const {
    const auto isSame = [&](const HistoryEntry& dropped) { return dropped.number == entry.number; };
    return prune && std::any_of(prune->dropped.begin(), prune->dropped.end(), isSame);
}

std::string HistoryReport::PruneText() const {
    if (!prune) {
        return "";
    }
    const std::size_t pins = prune->droppedPins;
    return fmt::format("{}: without {} of them{}, {}{}\n", Shown(output.empty() ? file : output), prune->dropped.size(),
                       pins == 0 ? "" : " and " + Counted(pins, "old list") + " of pins", SizeInWords(prune->freed),
                       output.empty() ? " would be freed; -o writes a copy" : " less");
}

Json HistoryReport::PruneDocument() const {
    Json numbers = Json::array();
    for (const HistoryEntry& entry : prune->dropped) {
        numbers.push_back(entry.number);
    }
    return {{"dropped", numbers},
            {"dropped_pins", prune->droppedPins},
            {"freed", std::to_string(prune->freed)},
            {"output", JsonRenderer::OrNull(output)}};
}

std::string HistoryReport::Text(const Palette& palette) const {
    Table table;
    if (!rows.empty()) {
        table.AddRow({{"", Style::Quiet},
                      {"section", Style::Quiet},
                      {"state", Style::Quiet},
                      {"offset", Style::Quiet},
                      {"size", Style::Quiet},
                      {"where it differs from the current one (own / current)", Style::Quiet}});
    }
    for (const HistoryRow& row : rows) {
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

Json HistoryReport::Document() const {
    Json configurations = Json::array();
    for (const HistoryRow& row : rows) {
        configurations.push_back(row.Document());
    }
    return JsonRenderer::Document("history", {{"file", file},
                                              {"configurations", configurations},
                                              {"prune", prune ? PruneDocument() : Json(nullptr)},
                                              {"doubts", doubts}});
}

}  // namespace stmdcm
