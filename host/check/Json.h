#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include "trace/dcm/ConfigPropertyValue.h"

namespace stmdcm_check {

// One line of JSON, of the standard library alone: a host can have any JSON library, and this one lives in its process.

/// In quotes. A text that is no UTF-8 becomes `{"bytes":"..."}`, in hexadecimal.
std::string JsonOf(std::string_view text);
inline std::string JsonOf(const std::string& text) { return JsonOf(std::string_view(text)); }
/// A null pointer is `null`.
std::string JsonOf(const char* text);
std::string JsonOf(const Zu::Wep::Trace::ConfigPropertyValue& value);
inline std::string JsonOf(bool value) { return value ? "true" : "false"; }
template <std::integral Number>
std::string JsonOf(Number number) {
    return std::to_string(number);
}

/// Members in the order in which they are added.
class JsonObject {
  public:
    template <class Value>
    JsonObject& Add(std::string_view name, const Value& value) {
        return AddJson(name, JsonOf(value));
    }
    /// A value that is JSON already.
    JsonObject& AddJson(std::string_view name, std::string_view json);

    bool IsEmpty() const { return m_members.empty(); }
    std::string Text() const { return "{" + m_members + "}"; }

  private:
    std::string m_members;
};

}  // namespace stmdcm_check
