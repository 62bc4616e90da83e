#include "tool/reports/ShowReport.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <algorithm>

#include "stmdcm/reading/ObjectFileCheck.h"
#include "stmdcm/reading/Words.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

ShowReport ShowReport::Of(const Reading& loaded, Selection asked, const std::vector<std::string>& wanted,
                          bool isOneOfMany) {
    asked.properties = asked.properties && loaded.hasSettings;
    asked.usecases = asked.usecases && loaded.hasSettings;
    asked.objectFiles = asked.objectFiles && loaded.hasObjectFiles;
    ShowReport report{loaded, asked, loaded.Doubts(), isOneOfMany, wanted};
    if (asked.objectFiles) {
        const std::vector<std::string> images = NotLookedAt(loaded.configuration.objectFiles);
        report.doubts.insert(report.doubts.end(), images.begin(), images.end());
    }
    return report;
}

std::vector<Property> ShowReport::Wanted() const {
    std::vector<Property> properties;
    for (const std::string& name : wanted) {
        const auto& all = loaded.configuration.properties;
        const auto found =
            std::find_if(all.begin(), all.end(), [&](const Property& each) { return each.name == name; });
        properties.insert(properties.end(), found, found == all.end() ? found : found + 1);
    }
    return properties;
}

std::string ShowReport::Values() const {
    std::vector<std::int32_t> values;
    for (const Property& property : selection.properties ? Wanted() : std::vector<Property>()) {
        values.push_back(property.value);
    }
    return fmt::format("{}\n", fmt::join(values, " "));
}

void ShowReport::WriteConfiguration(JsonWriter& out) const {
    if (wanted.empty()) {
        JsonRenderer::Write(out, loaded.configuration, selection);
        return;
    }
    Configuration some;
    some.properties = Wanted();
    JsonRenderer::Write(out, some, selection);
}

std::string ShowReport::Text(const Palette& palette) const {
    if (!wanted.empty()) {
        return Values();
    }
    const TextRenderer renderer(palette);
    const std::string text = renderer.Render(loaded.configuration, selection);
    return isOneOfMany ? renderer.Heading(Shown(loaded.path)) + text + "\n" : text;
}

JsonLine ShowReport::Document() const {
    JsonWriter out = JsonRenderer::Begin("show");
    out.Member("file", loaded.path).Member("kind", KindName(*loaded.kind)).Member("loaded", loaded.isLoaded);
    out.Member("doubts", doubts).Key("configuration");
    WriteConfiguration(out);
    return out.EndObject().Take();
}

}  // namespace stmdcm
