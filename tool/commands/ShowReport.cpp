#include "tool/commands/ShowReport.h"

#include "tool/render/JsonRenderer.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

std::string ShowReport::Text(const Palette& palette) const {
    return TextRenderer(palette).Render(m_loaded.configuration, m_selection);
}

std::string ShowReport::Json() const {
    JsonRenderer::Json document = JsonRenderer::Document("show");
    document["file"] = m_loaded.path;
    document["kind"] = KindName(*m_loaded.kind);
    document["loaded"] = m_loaded.isLoaded;
    document["doubts"] = m_loaded.Doubts();
    document["configuration"] = JsonRenderer::Render(m_loaded.configuration, m_selection);
    return JsonRenderer::Text(document);
}

}  // namespace stmdcm
