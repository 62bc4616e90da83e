#include "tool/commands/SectionsJson.h"

#include <fmt/format.h>

#include "stmdcm/capture/Retired.h"
#include "tool/render/JsonRenderer.h"

namespace stmdcm {

namespace {

using Json = JsonRenderer::Json;
using Zu::Wep::Trace::ScanStopText;

constexpr std::size_t kBlockSize = std::size_t{64} << 10;
constexpr std::string_view kListEnd = "]\n}\n";

const char* Problem(const Container& container, const Section& section) {
    if (section.IsTooShort()) {
        return "\"too_short\"";
    }
    return container.IsTorn(section) ? "\"torn\"" : "null";
}

/// In one line. Formatted directly: a tree of 100,000 sections would take too much memory and time.
std::string ItemText(const Container& container, const Section& section) {
    const std::string name = Json(container.Name(section)).dump(-1, ' ', false, Json::error_handler_t::replace);
    return fmt::format(
        R"({{"name": {}, "version": {}, "live_version": {}, "offset": "{}", "length": {}, "payload_offset": "{}", )"
        R"("payload_length": {}, "payload_held": "{}", "use": "{}", "problem": {}}})",
        name, section.version, LiveVersion(section.version), section.offset, section.length, section.PayloadOffset(),
        section.IsTooShort() ? "null" : fmt::format("{}", section.PayloadLength()), container.HeldPayload(section),
        SectionUseText(section.use), Problem(container, section));
}

/// The document with an empty list at its end.
std::string DocumentText(const Container& container) {
    const auto number = [](std::uint64_t value) { return fmt::format("{}", value); };
    Json document = JsonRenderer::Document("sections");
    document["file"] = container.Path();
    document["size"] = number(container.Size());
    document["whole"] = container.IsWhole();
    document["search_ends"] = {{"offset", number(container.StopOffset())}, {"reason", ScanStopText(container.Stop())}};
    document["trailing"] = {{"offset", number(container.TrailingOffset())},
                            {"length", number(container.TrailingLength())}};
    document["more"] = container.HasMore();
    document["sections"] = Json::array();
    return JsonRenderer::Text(document);
}

}  // namespace

void PrintSectionsJson(const Container& container, const TextSink& print) {
    std::string text = DocumentText(container);
    text.resize(text.size() - kListEnd.size());
    const char* separator = "\n    ";
    for (const Section& section : container.Sections()) {
        text += separator + ItemText(container, section);
        separator = ",\n    ";
        if (text.size() > kBlockSize) {
            print(text);
            text.clear();
        }
    }
    print(text.append(container.Sections().empty() ? "" : "\n  ").append(kListEnd));
}

}  // namespace stmdcm
