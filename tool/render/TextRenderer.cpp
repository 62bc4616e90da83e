#include "tool/render/TextRenderer.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string_view>

#include "stmdcm/reading/Words.h"
#include "tool/render/Table.h"

namespace stmdcm {

namespace {

constexpr std::size_t kIndent = 2;

/// The groups of the property list: each begins at a property and ends where the next one begins.
constexpr struct {
    std::string_view firstProperty;
    const char* title;
} kPropertyGroups[] = {
    {"Instruction_Compress", "Compression and master selection"},
    {"STM_data_flip", "Trace buffer"},
    {"TWP_Protocol", "Trace port"},
    {"Needs_Preprocess", "Decoder"},
};

std::string Label(const Field& field) {
    std::string label = field.name;
    std::replace(label.begin(), label.end(), '_', ' ');
    return label;
}

/// Collects the headings of the columns that an item's plain fields take.
struct HeadingVisitor {
    std::vector<Cell>& row;

    template <class T>
    void operator()(const Field& field, const T& /*value*/) const {
        row.push_back({Label(field), Style::Quiet});
    }
    template <class T>
    void operator()(const Field& /*field*/, const std::vector<T>& /*items*/) const {}
};

/// Collects an item's plain fields as cells, and what it contains as lines below it.
struct RowVisitor {
    std::vector<Cell>& row;
    std::vector<std::string>& lines;

    template <class T>
    void operator()(const Field& field, const T& value) const {
        std::string words = Shown(InWords(field.unit, value));
        const Style style = std::string_view(field.name) == "state" ? StateStyle(words) : Style::Plain;
        row.push_back({std::move(words), style});
    }
    void operator()(const Field& /*field*/, const std::vector<Counter>& counters) const {
        for (const Counter& counter : counters) {
            lines.push_back(fmt::format("  counter #{} {}", counter.number, Shown(counter.text)));
        }
    }
    void operator()(const Field& /*field*/, const std::vector<Formula>& formulas) const {
        for (const Formula& formula : formulas) {
            lines.push_back(fmt::format("  formula {} = {} [{}], tag number {}, output mask {}", Shown(formula.name),
                                        Shown(formula.formula), Shown(formula.unit), formula.tagNumber,
                                        InWords(Unit::Mask, formula.outputMask)));
        }
    }
};

std::vector<Cell> PropertyRow(const Property& property) {
    if (property.IsAtDefault()) {
        return {{property.name}, {InWords(property)}};
    }
    return {{property.name},
            {InWords(property), Style::Notable},
            {fmt::format("(default {})", DefaultInWords(property)), Style::Quiet}};
}

}  // namespace

Style StateStyle(std::string_view state) {
    if (state == "changed") {
        return Style::Notable;
    }
    constexpr std::string_view kBad[] = {"missing", "unknown", "another image", "same build-id, other content"};
    return std::find(std::begin(kBad), std::end(kBad), state) != std::end(kBad) ? Style::Bad : Style::Plain;
}

std::string TextRenderer::Properties(const std::vector<Property>& properties, bool changedOnly) const {
    Table table;
    for (const Property& property : properties) {
        for (const auto& group : kPropertyGroups) {
            if (group.firstProperty == property.name && !changedOnly) {
                table.AddLine({group.title, Style::Quiet});
            }
        }
        if (!changedOnly || !property.IsAtDefault()) {
            std::vector<Cell> row = PropertyRow(property);
            row.front().text.insert(0, changedOnly ? 0 : kIndent, ' ');
            table.AddRow(std::move(row));
        }
    }
    const auto changed = std::count_if(properties.begin(), properties.end(),
                                       [](const Property& property) { return !property.IsAtDefault(); });
    return Heading(fmt::format("Properties ({}, {} of them not at the default)", properties.size(), changed)) +
           table.Text(m_palette, kIndent);
}

template <class Item>
std::string TextRenderer::Items(const std::string& title, const std::vector<Item>& items) const {
    Table table;
    std::vector<Cell> headings;
    VisitFields(Item{}, HeadingVisitor{headings});
    if (!items.empty()) {
        table.AddRow(std::move(headings));
    }
    for (const Item& item : items) {
        std::vector<Cell> row;
        std::vector<std::string> lines;
        VisitFields(item, RowVisitor{row, lines});
        table.AddRow(std::move(row));
        for (std::string& line : lines) {
            table.AddLine({std::move(line)});
        }
    }
    return Heading(fmt::format("{} ({})", title, items.size())) + table.Text(m_palette, kIndent);
}

std::string TextRenderer::ObjectFiles(const std::vector<ObjectFile>& files) const {
    return Items("Object files", files);
}

std::string TextRenderer::Render(const Configuration& configuration, const Selection& selection) const {
    std::vector<std::string> parts;
    if (selection.properties) {
        parts.push_back(Properties(configuration.properties, selection.changedOnly));
    }
    if (selection.usecases) {
        Configuration::ForEachKind([&](auto kind, auto list) {
            parts.push_back(Items(fmt::format("{} use cases", NamesOf(kind).name), configuration.*list));
        });
    }
    if (selection.objectFiles) {
        parts.push_back(ObjectFiles(configuration.objectFiles));
    }
    return fmt::format("{}", fmt::join(parts, "\n"));
}

std::string TextRenderer::Differences(const std::vector<Difference>& differences) const {
    Table table;
    for (const Difference& difference : differences) {
        table.AddRow({{difference.kind},
                      {Shown(difference.item)},
                      {difference.field},
                      {Shown(difference.left.value_or("not there")), Style::Notable},
                      {"/", Style::Quiet},
                      {Shown(difference.right.value_or("not there")), Style::Notable}});
    }
    return table.Text(m_palette, kIndent);
}

}  // namespace stmdcm
