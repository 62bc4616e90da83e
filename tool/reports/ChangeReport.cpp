#include "tool/reports/ChangeReport.h"

#include <fmt/format.h>

#include "stmdcm/reading/Words.h"
#include "tool/render/Table.h"

namespace stmdcm {

namespace ChangeReport {

namespace {

const char* Heading(const ChangeResult& result) {
    if (!result.HasChanges()) {
        return "nothing to change, nothing was written";
    }
    if (!result.isWritten) {
        return result.isNew ? "would get its first configuration" : "would be changed";
    }
    return result.isNew ? "has its first configuration" : "changed";
}

}  // namespace

std::string Item(const Difference& change) {
    const std::string item = Shown(change.item);
    if (change.kind == "property") {
        return item;
    }
    return fmt::format("{} {}{}{}", change.kind, item, change.field.empty() ? "" : ", ", change.field);
}

std::string Changes(const std::vector<Difference>& changes, const Palette& palette) {
    Table table;
    for (const Difference& change : changes) {
        table.AddRow({{Item(change)},
                      {Shown(change.left.value_or("not there"))},
                      {"->", Style::Quiet},
                      {Shown(change.right.value_or("gone")), Style::Notable}});
    }
    return table.Text(palette, 2);
}

std::string Text(const ChangeResult& result, const Palette& palette) {
    return fmt::format("{}: {}\n", Shown(result.path), Heading(result)) + Changes(result.changes, palette);
}

Json Document(const ChangeResult& result) {
    return {{"file", result.path},     {"changes", JsonRenderer::Differences(result.changes)},
            {"new", result.isNew},     {"written", result.isWritten},
            {"doubts", result.doubts}, {"warnings", result.warnings}};
}

}  // namespace ChangeReport

Json ApplyReport::Document() const {
    Json capture = ChangeReport::Document(result);
    capture["failure"] = JsonRenderer::OrNull(failure);
    return JsonRenderer::Document("apply", {{"source", source},
                                            {"source_doubts", sourceDoubts},
                                            {"dry_run", isDryRun},
                                            {"captures", Json::array({capture})}});
}

}  // namespace stmdcm
