#include "stmdcm/reading/Escaped.h"

#include <bit>
#include <cstdint>

namespace stmdcm {

Character FirstCharacter(std::string_view text) {
    constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};  // by length: what is below takes less
    constexpr Character kInvalid{1, false, false};
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) {
        return {1, true, lead >= 0x20 && lead != 0x7f};
    }
    const std::size_t length = static_cast<std::size_t>(std::countl_one(lead));
    if (length < 2 || length > 4 || length > text.size()) {
        return kInvalid;
    }
    std::uint32_t code = lead & (0x7FU >> length);
    for (const char c : text.substr(1, length - 1)) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0U) != 0x80U) {
            return kInvalid;
        }
        code = code << 6U | (byte & 0x3FU);
    }
    const bool isSurrogate = code >= 0xD800 && code < 0xE000;
    if (code < kLeast[length] || code > 0x10FFFF || isSurrogate) {
        return kInvalid;
    }
    return {length, true, code >= 0xA0};
}

std::string Escaped(std::string_view text) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string words;
    while (!text.empty()) {
        const Character first = FirstCharacter(text);
        if (first.isPrintable) {
            words += text.substr(0, first.length);
        } else {
            for (const char c : text.substr(0, first.length)) {
                const auto byte = static_cast<unsigned char>(c);
                words += {'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
            }
        }
        text.remove_prefix(first.length);
    }
    return words;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const Character first = FirstCharacter(text);
        if (!first.isValid) {
            return false;
        }
        text.remove_prefix(first.length);
    }
    return true;
}

}  // namespace stmdcm
