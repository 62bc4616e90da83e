#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stmdcm {

using Json = nlohmann::ordered_json;

/// A finished document in one line, without a line feed.
struct JsonLine {
    std::string text;
};

/// Writes a document as it is told of, without a tree of it: that takes most of the time where there are many. Texts
/// that need escapes go through the library, so the result is what it would print of the tree.
class JsonWriter {
  public:
    JsonWriter& BeginObject() { return Begin('{', {}); }
    JsonWriter& EndObject() { return End('}'); }
    JsonWriter& BeginArray() { return Begin('[', 0); }
    JsonWriter& EndArray() { return End(']'); }
    /// Of an object's member, whose value follows. The name needs no escapes, and stays until that is written.
    JsonWriter& Key(std::string_view name);

    JsonWriter& Value(std::nullptr_t) { return Plain("null"); }
    JsonWriter& Value(std::same_as<bool> auto value) { return Plain(value ? "true" : "false"); }
    template <std::integral Number>
    JsonWriter& Value(Number value) requires(!std::same_as<Number, bool>) {
        std::array<char, 24> digits;
        const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        return Plain({digits.data(), static_cast<std::size_t>(end - digits.data())});
    }
    JsonWriter& Value(std::string_view text);
    JsonWriter& Value(const char* text) { return Value(std::string_view(text)); }
    JsonWriter& Value(const std::string& text) { return Value(std::string_view(text)); }
    JsonWriter& Value(const std::vector<std::string>& texts);
    /// All of a tree.
    JsonWriter& Value(const std::same_as<Json> auto& tree) { return Tree(tree); }
    /// Nothing for an empty text.
    JsonWriter& OrNull(std::string_view text) { return text.empty() ? Value(nullptr) : Value(text); }

    template <class T>
    JsonWriter& Member(std::string_view name, const T& value) {
        return Key(name).Value(value);
    }

    /// The outermost value, which has ended. Where texts in it are no UTF-8, their true bytes come last (docs/json.md).
    JsonLine Take();

  private:
    /// Where the next value goes: behind a name, or at a place in an array.
    struct Level {
        std::string_view name;
        std::optional<std::size_t> index;  ///< nothing in an object
    };

    JsonWriter& Begin(char bracket, std::optional<std::size_t> index);
    JsonWriter& End(char bracket);
    JsonWriter& Plain(std::string_view text);
    JsonWriter& Tree(const Json& tree);
    void Separate(std::size_t room);
    void Room(std::size_t size);
    // Where there is room.
    void Put(char c) { m_text[m_size++] = c; }
    void Put(std::string_view text) { m_size += text.copy(m_text.data() + m_size, text.size()); }
    std::string Pointer() const;

    static constexpr std::size_t kUsualSize = 4096;

    std::string m_text = std::string(kUsualSize, ' ');  ///< with room behind what is written
    std::size_t m_size = 0;
    std::vector<Level> m_levels;
    bool m_needsComma = false;
    Json m_bytes = Json::object();
};

}  // namespace stmdcm
