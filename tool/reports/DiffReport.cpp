#include "tool/reports/DiffReport.h"

#include <fmt/format.h>

#include "stmdcm/reading/Words.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

namespace {

Json ToJson(const Reading& side) {
    return {{"file", side.path}, {"kind", KindName(*side.kind)}, {"doubts", side.Doubts()}};
}

}  // namespace

std::string DiffReport::Text(const Palette& palette) const {
    const std::string sides = fmt::format(" ({} / {})", Shown(left.path), Shown(right.path));
    std::string text = TextRenderer(palette).Differences(differences);
    text += IsEqual() ? palette.Paint(Style::Good, "no difference" + (isOneOfMany ? sides : ""))
                      : palette.Paint(Style::Notable, fmt::format("{} different{}", differences.size(), sides));
    return text + (comparesObjectFiles ? "\n" : "; object files are not compared: settings files have none\n");
}

Json DiffReport::Document() const {
    return JsonRenderer::Document("diff", {{"left", ToJson(left)},
                                           {"right", ToJson(right)},
                                           {"object_files_compared", comparesObjectFiles},
                                           {"differences", JsonRenderer::Differences(differences)},
                                           {"equal", IsEqual()}});
}

}  // namespace stmdcm
