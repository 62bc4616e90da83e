#include "tool/commands/LiveReport.h"

#include <fmt/format.h>

#include "tool/render/JsonRenderer.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

std::string LiveReport::Text(const Palette& palette) const {
    std::string text = TextRenderer(palette).Render(m_live.configuration);
    if (!m_saved.empty()) {
        text += fmt::format("\nSaved into {}\n", m_saved);
    }
    return text;
}

std::string LiveReport::Json() const {
    JsonRenderer::Json document = JsonRenderer::Document("live");
    document["plugin"] = m_plugin;
    document["cpu"] = m_live.cpu;
    document["doubts"] = m_live.doubts;
    document["configuration"] = JsonRenderer::Render(m_live.configuration);
    document["saved"] = m_saved.empty() ? JsonRenderer::Json(nullptr) : JsonRenderer::Json(m_saved);
    return JsonRenderer::Text(document);
}

}  // namespace stmdcm
