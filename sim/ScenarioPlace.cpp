#include "sim/ScenarioPlace.h"

#include <algorithm>
#include <cctype>
#include <set>

#include "host/vorn/vornError.h"
#include "sim/CallLog.h"

namespace stmdcm_sim {

using Zu::Wep::Vorn::vornError;

void ScenarioPlace::Refuse(const std::string& file, std::size_t line, const std::string& reason) {
    throw vornError(file + ":" + std::to_string(line) + ": " + reason, vornError::Severity_Error);
}

void ScenarioPlace::Refuse(const std::string& reason) const {
    Refuse(*m_file, m_node->line, m_field.empty() ? reason : m_field + ": " + reason);
}

void ScenarioPlace::Expect(JsonNode::Kind kind, const char* what) const {
    if (m_node->kind != kind) {
        Refuse(std::string("has to be ") + what);
    }
}

const std::string& ScenarioPlace::Text() const {
    Expect(JsonNode::Kind::Text, "a text");
    if (m_node->text.find('\0') != std::string::npos) {
        Refuse("holds a zero byte");
    }
    return m_node->text;
}

std::int64_t ScenarioPlace::Integer(std::int64_t least, std::int64_t most) const {
    if (!IsInteger() || m_node->number < least || m_node->number > most) {
        Refuse("has to be an integer from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return m_node->number;
}

std::size_t ScenarioPlace::Choice(std::initializer_list<std::string_view> words, const std::string& reason) const {
    const auto* found = std::find(words.begin(), words.end(), m_node->text);
    if (m_node->kind != JsonNode::Kind::Text || found == words.end()) {
        Refuse(reason);
    }
    return static_cast<std::size_t>(found - words.begin());
}

std::vector<ScenarioPlace> ScenarioPlace::Elements() const {
    Expect(JsonNode::Kind::Array, "an array");
    std::vector<ScenarioPlace> elements;
    for (const JsonNode& node : m_node->children) {
        elements.emplace_back(*m_file, node, m_field + "[" + std::to_string(elements.size()) + "]");
    }
    return elements;
}

ScenarioPlace ScenarioPlace::Member(const JsonNode& node) const {
    const bool plain = std::all_of(node.key.begin(), node.key.end(),
                                   [](unsigned char letter) { return std::isalnum(letter) != 0 || letter == '_'; });
    if (node.key.empty() || !plain) {
        return {*m_file, node, m_field + "[" + CallLog::Quoted(node.key) + "]"};
    }
    return {*m_file, node, m_field.empty() ? node.key : m_field + "." + node.key};
}

std::vector<ScenarioPlace> ScenarioPlace::Members() const {
    Expect(JsonNode::Kind::Object, "an object");
    std::set<std::string_view> keys;
    std::vector<ScenarioPlace> members;
    for (const JsonNode& node : m_node->children) {
        members.push_back(Member(node));
        if (!keys.insert(node.key).second) {
            members.back().Refuse("stands here twice");
        }
    }
    return members;
}

void ScenarioPlace::AllowOnly(std::initializer_list<std::string_view> keys) const {
    for (const ScenarioPlace& member : Members()) {
        if (std::find(keys.begin(), keys.end(), member.Key()) == keys.end()) {
            member.Refuse("unknown field");
        }
    }
}

std::optional<ScenarioPlace> ScenarioPlace::Find(std::string_view key) const {
    const auto found = std::find_if(m_node->children.begin(), m_node->children.end(),
                                    [key](const JsonNode& node) { return node.key == key; });
    return found == m_node->children.end() ? std::nullopt : std::optional(Member(*found));
}

ScenarioPlace ScenarioPlace::Need(std::string_view key) const {
    const std::optional<ScenarioPlace> found = Find(key);
    if (!found) {
        Refuse("lacks the field \"" + std::string(key) + "\"");
    }
    return *found;
}

}  // namespace stmdcm_sim
