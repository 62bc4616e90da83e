#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/JsonNode.h"

namespace stmdcm_sim {

/// A value in a scenario file. Whatever is not as asked for is a vornError that names file, line and field.
class ScenarioPlace {
  public:
    /// Borrows both.
    ScenarioPlace(const std::string& file, const JsonNode& node, std::string field = {})
        : m_file(&file), m_node(&node), m_field(std::move(field)) {}

    [[noreturn]] void Refuse(const std::string& reason) const;
    [[noreturn]] static void Refuse(const std::string& file, std::size_t line, const std::string& reason);

    const std::string& Key() const { return m_node->key; }
    bool IsInteger() const { return m_node->kind == JsonNode::Kind::Integer; }
    bool IsArray() const { return m_node->kind == JsonNode::Kind::Array; }
    bool IsNull() const { return m_node->kind == JsonNode::Kind::Null; }

    /// A text without zero bytes: its readers take it up to the first.
    const std::string& Text() const;
    std::int64_t Integer(std::int64_t least, std::int64_t most) const;
    /// The place in `words` of the text found here.
    std::size_t Choice(std::initializer_list<std::string_view> words, const std::string& reason) const;

    std::vector<ScenarioPlace> Elements() const;
    /// Each key at most once.
    std::vector<ScenarioPlace> Members() const;
    /// The same, and no other key than these.
    void AllowOnly(std::initializer_list<std::string_view> keys) const;
    std::optional<ScenarioPlace> Find(std::string_view key) const;
    ScenarioPlace Need(std::string_view key) const;

  private:
    void Expect(JsonNode::Kind kind, const char* what) const;
    ScenarioPlace Member(const JsonNode& node) const;

    const std::string* m_file;
    const JsonNode* m_node;
    std::string m_field;
};

}  // namespace stmdcm_sim
