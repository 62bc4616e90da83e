#include "tool/commands/DiffReport.h"

#include <fmt/format.h>

#include "tool/render/JsonRenderer.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

namespace {

Configuration WithoutObjectFiles(Configuration configuration) {
    configuration.objectFiles.clear();
    return configuration;
}

JsonRenderer::Json SideToJson(const Reading& side) {
    return {{"file", side.path}, {"kind", KindName(*side.kind)}, {"doubts", side.Doubts()}};
}

}  // namespace

DiffReport::DiffReport(const Reading& left, const Reading& right)
    : m_left(left),
      m_right(right),
      m_comparesObjectFiles(left.hasObjectFiles && right.hasObjectFiles),
      m_differences(m_comparesObjectFiles
                        ? Compare(left.configuration, right.configuration)
                        : Compare(WithoutObjectFiles(left.configuration), WithoutObjectFiles(right.configuration))) {}

std::string DiffReport::Text(const Palette& palette) const {
    std::string text = TextRenderer(palette).Differences(m_differences);
    text += IsEqual() ? palette.Paint(Style::Good, "no difference")
                      : palette.Paint(Style::Notable, fmt::format("{} different ({} / {})", m_differences.size(),
                                                                  m_left.path, m_right.path));
    return text + (m_comparesObjectFiles ? "\n" : "; object files are not compared: settings files have none\n");
}

std::string DiffReport::Json() const {
    JsonRenderer::Json document = JsonRenderer::Document("diff");
    document["left"] = SideToJson(m_left);
    document["right"] = SideToJson(m_right);
    document["object_files_compared"] = m_comparesObjectFiles;
    document["differences"] = JsonRenderer::Differences(m_differences);
    document["equal"] = IsEqual();
    return JsonRenderer::Text(document);
}

}  // namespace stmdcm
