#include "tool/commands/ConvertResult.h"

#include <fmt/format.h>

#include "tool/render/JsonRenderer.h"

namespace stmdcm {

std::string ConvertResult::Text() const {
    return fmt::format("{} ({}) -> {} ({}), {}\n", from, KindName(fromKind), to, KindName(toKind),
                       lost.empty() ? "loads as the same configuration" : "with losses");
}

std::string ConvertResult::Json() const {
    JsonRenderer::Json document = JsonRenderer::Document("convert");
    document["from"] = {{"file", from}, {"kind", KindName(fromKind)}};
    document["to"] = {{"file", to}, {"kind", KindName(toKind)}};
    document["lost"] = lost;
    return JsonRenderer::Text(document);
}

}  // namespace stmdcm
