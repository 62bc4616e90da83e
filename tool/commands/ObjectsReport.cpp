#include "tool/commands/ObjectsReport.h"

#include <fmt/format.h>

#include "stmdcm/reading/Words.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Table.h"

namespace stmdcm {

namespace {

Cell StateCell(const ObjectFile& file) {
    switch (file.DiskState()) {
        case ObjectFile::State::Present:
            return {file.DiskStateName(), Style::Good};
        case ObjectFile::State::Changed:
            return {file.DiskStateName(), Style::Notable};
        case ObjectFile::State::Missing:
            break;
    }
    return {file.DiskStateName(), Style::Bad};
}

void AddRows(const ImageAnswer& answer, Table& table) {
    table.AddRow({{InWords(Unit::None, answer.recorded.name)},
                  StateCell(answer.recorded),
                  {InWords(Unit::None, answer.recorded.path)},
                  {"recorded " + InWords(Unit::UnixTime, answer.recorded.recorded), Style::Quiet}});
    if (answer.how != ImageAnswer::How::Recorded) {
        table.AddRow({{"  by " + std::string(answer.HowName()), Style::Quiet},
                      StateCell(answer.found),
                      {InWords(Unit::None, answer.found.path)},
                      {answer.found.modified ? "modified " + InWords(Unit::UnixTime, answer.found.modified) : "",
                       Style::Quiet}});
    } else if (answer.recorded.DiskState() == ObjectFile::State::Changed) {
        table.AddRow({{}, {}, {}, {"modified " + InWords(Unit::UnixTime, answer.recorded.modified), Style::Quiet}});
    }
    for (const std::string& candidate : answer.candidates) {
        table.AddRow({{"  perhaps", Style::Quiet}, {}, {InWords(Unit::None, candidate)}});
    }
}

const char* Outcome(const ImageList& list) {
    if (list.isWritten) {
        return ", the capture has their new places";
    }
    return "";
}

}  // namespace

std::string ObjectsReport::Text(const Palette& palette) const {
    Table table;
    for (const ImageAnswer& answer : m_list.answers) {
        AddRows(answer, table);
    }
    const std::size_t total = m_list.answers.size();
    return palette.Paint(Style::Heading, fmt::format("{}: {} of {} program images are accounted for{}", m_list.path,
                                                     total - m_list.unresolved, total, Outcome(m_list))) +
           "\n" + table.Text(palette, 2);
}

std::string ObjectsReport::Json() const {
    JsonRenderer::Json document = JsonRenderer::Document("objects");
    document["file"] = m_list.path;
    document["object_files"] = JsonRenderer::Json::array();
    for (const ImageAnswer& answer : m_list.answers) {
        JsonRenderer::Json json = JsonRenderer::ObjectFiles({answer.recorded}).front();
        json["how"] = answer.HowName();
        json["found"] = JsonRenderer::ObjectFiles({answer.found}).front();
        json["candidates"] = answer.candidates;
        document["object_files"].push_back(std::move(json));
    }
    document["unresolved"] = m_list.unresolved;
    document["written"] = m_list.isWritten;
    document["doubts"] = m_list.doubts;
    return JsonRenderer::Text(document);
}

}  // namespace stmdcm
