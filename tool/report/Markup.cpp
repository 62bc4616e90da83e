#include "tool/report/Markup.h"

#include <fmt/format.h>
#include <nettle/base64.h>

#include "stmdcm/pins/Sha256.h"
#include "stmdcm/reading/Escaped.h"

namespace stmdcm {

namespace {

/// U+200E, U+200F, U+202A to U+202E and U+2066 to U+2069 are the third byte of E2 80 and E2 81; U+061C is D8 9C.
bool TurnsText(std::string_view character) {
    if (character == "\xD8\x9C") {
        return true;
    }
    if (character.size() != 3 || character[0] != '\xE2') {
        return false;
    }
    const auto last = static_cast<unsigned char>(character[2]);
    return character[1] == '\x80' ? last == 0x8E || last == 0x8F || (last >= 0xA8 && last <= 0xAE)
                                  : character[1] == '\x81' && last >= 0xA6 && last <= 0xA9;
}

std::string CodeOf(std::string_view character) {
    unsigned code = static_cast<unsigned char>(character[0]) & (0x7FU >> character.size());
    for (const char c : character.substr(1)) {
        code = code << 6U | (static_cast<unsigned char>(c) & 0x3FU);
    }
    return fmt::format("\\u{:04x}", code);
}

void AddAsHtml(std::string_view character, std::string& html) {
    switch (character[0]) {
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '&':
            html += "&amp;";
            break;
        case '"':
            html += "&quot;";
            break;
        case '\'':
            html += "&#39;";
            break;
        default:
            html += TurnsText(character) ? CodeOf(character) : character;
    }
}

}  // namespace

std::string AsHtml(std::string_view text) {
    std::string html;
    html.reserve(text.size() + text.size() / 8);
    while (!text.empty()) {
        const std::size_t length = FirstCharacter(text).length;
        AddAsHtml(text.substr(0, length), html);
        text.remove_prefix(length);
    }
    return html;
}

std::string AsScriptData(std::string_view json) {
    constexpr std::string_view kLineEnds = "\xE2\x80\xA8\xE2\x80\xA9";
    std::string data;
    data.reserve(json.size() + json.size() / 8);
    while (!json.empty()) {
        const char c = json.front();
        const bool isLineEnd = c == kLineEnds[0] && json.size() > 2 && kLineEnds.find(json.substr(0, 3)) % 3 == 0;
        if (isLineEnd) {
            data += CodeOf(json.substr(0, 3));
        } else if (c == '<' || c == '>' || c == '&') {
            data += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
        } else {
            data += c;
        }
        json.remove_prefix(isLineEnd ? 3 : 1);
    }
    return data;
}

std::string PolicyHash(std::string_view content) {
    Sha256 sha256;
    sha256.Add(content);
    const std::string digest = sha256.Take();
    std::string text(BASE64_ENCODE_RAW_LENGTH(digest.size()), '\0');
    base64_encode_raw(text.data(), digest.size(), reinterpret_cast<const std::uint8_t*>(digest.data()));
    return "'sha256-" + text + "'";
}

}  // namespace stmdcm
