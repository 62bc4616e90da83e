#include "host/check/Json.h"

#include <cstring>

#include "stmdcm/reading/Escaped.h"

namespace stmdcm_check {

namespace {

std::string Hexadecimal(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string digits;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        digits += {kDigits[byte / 16], kDigits[byte % 16]};
    }
    return digits;
}

}  // namespace

std::string JsonOf(std::string_view text) {
    if (!stmdcm::IsUtf8(text)) {
        return R"({"bytes":")" + Hexadecimal(text) + "\"}";
    }
    std::string json = "\"";
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < 0x20) {
            json += "\\u00" + Hexadecimal({&c, 1});
        } else {
            json += c == '"' || c == '\\' ? std::string{'\\', c} : std::string(1, c);
        }
    }
    return json + "\"";
}

std::string JsonOf(const char* text) { return text != nullptr ? JsonOf(std::string_view(text)) : "null"; }

std::string JsonOf(const Zu::Wep::Trace::ConfigPropertyValue& value) {
    char bytes[sizeof value.value];
    std::memcpy(bytes, &value.value, sizeof bytes);
    return JsonObject()
        .Add("type", value.type)
        .Add("text", value.text)
        .Add("integer", value.value.integer)
        .Add("union", Hexadecimal({bytes, sizeof bytes}))
        .Text();
}

JsonObject& JsonObject::AddJson(std::string_view name, std::string_view json) {
    m_members += m_members.empty() ? "" : ",";
    m_members += JsonOf(name) + ":";
    m_members += json;
    return *this;
}

}  // namespace stmdcm_check
