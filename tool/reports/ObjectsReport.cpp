#include "tool/reports/ObjectsReport.h"

#include <fmt/format.h>

#include "stmdcm/reading/Words.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

namespace {

Cell StateCell(const ObjectFile& file) { return {file.DiskStateName(), StateStyle(file.DiskStateName())}; }

}  // namespace

void ObjectsReport::AddRows(const ImageAnswer& answer, Table& table) {
    const auto modified = [](const ObjectFile& file) {
        const bool isOther = file.match && *file.match != PinMatch::Same;
        return "modified " + InWords(Unit::UnixTime, file.modified) +
               (isOther ? ": this is not the image that was captured" : "");
    };
    table.AddRow({{Shown(answer.recorded.name)},
                  StateCell(answer.recorded),
                  {Shown(answer.recorded.path)},
                  {"recorded " + InWords(Unit::UnixTime, answer.recorded.recorded), Style::Quiet}});
    if (answer.how != ImageAnswer::How::Recorded) {
        table.AddRow({{"  by " + std::string(answer.HowName()), Style::Quiet},
                      StateCell(answer.found),
                      {Shown(answer.found.path)},
                      {answer.found.modified ? modified(answer.found) : "", Style::Quiet}});
    } else if (answer.recorded.modified && !answer.recorded.IsPresent()) {
        table.AddRow({{}, {}, {}, {modified(answer.recorded), Style::Quiet}});
    }
    for (const std::string& candidate : answer.candidates) {
        table.AddRow({{"  perhaps", Style::Quiet}, {}, {Shown(candidate)}});
    }
}

std::string ObjectsReport::Text(const Palette& palette) const {
    Table table;
    for (const ImageAnswer& answer : list.answers) {
        AddRows(answer, table);
    }
    const std::size_t total = list.answers.size();
    const std::string what = parts.places ? parts.pins ? "their places and pins" : "their new places" : "their pins";
    const char* recorded = list.isWritten ? ", the capture has " : ", the capture would get ";
    const std::string outcome = list.hasChanges ? recorded + what : "";
    return palette.Paint(Style::Heading, fmt::format("{}: {} of {} program images were found{}", Shown(list.path),
                                                     total - list.unresolved, total, outcome)) +
           "\n" + table.Text(palette, 2);
}

JsonLine ObjectsReport::Document() const {
    JsonWriter out = JsonRenderer::Begin("objects");
    out.Member("file", list.path).Key("object_files").BeginArray();
    for (const ImageAnswer& answer : list.answers) {
        out.BeginObject();
        JsonRenderer::WriteMembers(out, answer.recorded);
        out.Member("how", answer.HowName()).Key("found").BeginObject();
        JsonRenderer::WriteMembers(out, answer.found);
        out.EndObject().Member("candidates", answer.candidates).EndObject();
    }
    out.EndArray().Member("unresolved", list.unresolved).Member("changed", list.hasChanges);
    return out.Member("written", list.isWritten).Member("doubts", list.doubts).EndObject().Take();
}

}  // namespace stmdcm
