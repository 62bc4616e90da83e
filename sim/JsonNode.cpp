#include "sim/JsonNode.h"

#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

namespace stmdcm_sim {

namespace {

using nlohmann::json;

constexpr std::size_t kDepthLimit = 16;

/// Walks a text and keeps `line` at the line of the character read last; a line break still belongs to its line, so
/// the one character that the parser reads beyond a number does no harm.
class LineCountingIterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    LineCountingIterator(const char* at, std::size_t& line) : m_at(at), m_line(&line) {}

    reference operator*() {
        *m_line += std::exchange(m_afterBreak, *m_at == '\n') ? 1 : 0;
        return *m_at;
    }
    LineCountingIterator& operator++() {
        ++m_at;
        return *this;
    }
    bool operator==(const LineCountingIterator& other) const { return m_at == other.m_at; }
    bool operator!=(const LineCountingIterator& other) const { return m_at != other.m_at; }

  private:
    const char* m_at;
    std::size_t* m_line;
    bool m_afterBreak = false;
};

class TreeBuilder : public json::json_sax_t {
  public:
    explicit TreeBuilder(const std::size_t& line) : m_line(line) { m_open.push_back(&m_root); }

    JsonNode Take() { return std::move(m_root.children.front()); }

    bool null() override { return Add(JsonNode::Kind::Null); }
    bool boolean(bool /*value*/) override { return Add(JsonNode::Kind::Other); }
    bool number_integer(number_integer_t value) override { return AddInteger(value); }
    bool number_unsigned(number_unsigned_t value) override {
        return std::in_range<std::int64_t>(value) ? AddInteger(static_cast<std::int64_t>(value))
                                                  : Add(JsonNode::Kind::Other);
    }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override {
        return Add(JsonNode::Kind::Other);
    }
    bool binary(binary_t& /*value*/) override { return Add(JsonNode::Kind::Other); }
    bool string(string_t& value) override {
        Add(JsonNode::Kind::Text);
        Last().text = value;
        return true;
    }
    bool start_object(std::size_t /*size*/) override { return Open(JsonNode::Kind::Object); }
    bool start_array(std::size_t /*size*/) override { return Open(JsonNode::Kind::Array); }
    bool end_object() override { return Close(); }
    bool end_array() override { return Close(); }
    bool key(string_t& value) override {
        m_key = value;
        m_keyLine = m_line;
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& error) override {
        const std::string text = error.what();  // what precedes the last part is a place, told here by the line
        const std::size_t reason = text.find("syntax error");
        throw JsonError(m_line, "not JSON: " + (reason == std::string::npos ? text : text.substr(reason)));
    }

  private:
    JsonNode& Last() { return m_open.back()->children.back(); }
    bool Add(JsonNode::Kind kind) {
        JsonNode node;
        node.kind = kind;
        node.line = std::exchange(m_keyLine, 0);
        node.line = node.line != 0 ? node.line : m_line;
        node.key = std::exchange(m_key, {});
        m_open.back()->children.push_back(std::move(node));
        return true;
    }
    bool AddInteger(std::int64_t value) {
        Add(JsonNode::Kind::Integer);
        Last().number = value;
        return true;
    }
    bool Open(JsonNode::Kind kind) {
        if (m_open.size() > kDepthLimit) {
            throw JsonError(m_line, "nested too deep");
        }
        Add(kind);
        m_open.push_back(&Last());  // stays where it is: only the innermost list grows
        return true;
    }
    bool Close() {
        m_open.pop_back();
        return true;
    }

    const std::size_t& m_line;
    JsonNode m_root;
    std::vector<JsonNode*> m_open;
    std::string m_key;
    std::size_t m_keyLine = 0;  ///< 0 when the next value has no key
};

}  // namespace

JsonNode ParseJson(const std::string& text) {
    std::size_t line = 1;
    TreeBuilder builder(line);
    json::sax_parse(LineCountingIterator(text.data(), line), LineCountingIterator(text.data() + text.size(), line),
                    &builder);
    return builder.Take();
}

}  // namespace stmdcm_sim
