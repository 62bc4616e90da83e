#include "tool/render/JsonWriter.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

#include "stmdcm/reading/Escaped.h"

namespace stmdcm {

namespace {

bool IsPlain(char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; }

}  // namespace

JsonWriter& JsonWriter::Key(std::string_view name) {
    Room(name.size() + 4);
    if (std::exchange(m_needsComma, false)) {
        Put(',');
    }
    Put('"');
    Put(name);
    Put('"');
    Put(':');
    m_levels.back().name = name;
    return *this;
}

JsonWriter& JsonWriter::Value(std::string_view text) {
    if (std::all_of(text.begin(), text.end(), IsPlain)) {
        Separate(text.size() + 3);
        Put('"');
        Put(text);
        Put('"');
        return *this;
    }
    const std::string copy(text);
    if (!IsUtf8(copy)) {
        m_bytes[Pointer()] = fmt::format("{:02x}", fmt::join(std::vector<unsigned char>(text.begin(), text.end()), ""));
    }
    return Plain(Json(copy).dump(-1, ' ', false, Json::error_handler_t::replace));
}

JsonWriter& JsonWriter::Value(const std::vector<std::string>& texts) {
    BeginArray();
    for (const std::string& text : texts) {
        Value(text);
    }
    return EndArray();
}

JsonLine JsonWriter::Take() {
    m_text.resize(m_size);
    if (!m_bytes.empty()) {
        m_text.pop_back();
        m_text += fmt::format(",\"bytes\":{}}}", m_bytes.dump());
    }
    return {std::move(m_text)};
}

JsonWriter& JsonWriter::Begin(char bracket, std::optional<std::size_t> index) {
    Separate(2);
    Put(bracket);
    m_needsComma = false;
    m_levels.push_back({{}, index});
    return *this;
}

JsonWriter& JsonWriter::End(char bracket) {
    Room(1);
    Put(bracket);
    m_levels.pop_back();
    m_needsComma = true;
    return *this;
}

JsonWriter& JsonWriter::Plain(std::string_view text) {
    Separate(text.size() + 1);
    Put(text);
    return *this;
}

JsonWriter& JsonWriter::Tree(const Json& tree) {
    if (tree.is_string()) {
        return Value(tree.get_ref<const std::string&>());
    }
    if (tree.is_object()) {
        BeginObject();
        for (const auto& [name, value] : tree.items()) {
            Key(name).Tree(value);
        }
        return EndObject();
    }
    if (tree.is_array()) {
        BeginArray();
        for (const Json& value : tree) {
            Tree(value);
        }
        return EndArray();
    }
    return Plain(tree.dump());
}

/// In front of a value that takes so much room with its comma, and behind which there may be another one.
void JsonWriter::Separate(std::size_t room) {
    Room(room);
    if (std::exchange(m_needsComma, true)) {
        Put(',');
    }
    if (!m_levels.empty() && m_levels.back().index) {
        ++*m_levels.back().index;
    }
}

void JsonWriter::Room(std::size_t size) {
    if (m_text.size() - m_size < size) {
        m_text.resize(std::max(2 * m_text.size(), m_size + size));
    }
}

/// Of the value that comes next.
std::string JsonWriter::Pointer() const {
    std::string pointer;
    for (const Level& level : m_levels) {
        const bool isLast = &level == &m_levels.back();
        // The place of an array was counted when the array within it began.
        pointer += level.index ? fmt::format("/{}", *level.index - (isLast ? 0 : 1)) : fmt::format("/{}", level.name);
    }
    return pointer;
}

}  // namespace stmdcm
