#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace stmdcm_sim {

/// A value of a JSON text that remembers where it stands.
struct JsonNode {
    enum class Kind { Text, Integer, Array, Object, Null, Other };

    Kind kind = Kind::Other;
    std::size_t line = 1;  ///< counted from 1: of its key, or of its start when it has none
    std::string key;
    std::string text;
    std::int64_t number = 0;
    std::vector<JsonNode> children;  ///< in the order of the text; keys may repeat
};

/// A text that is no JSON, or is nested too deep.
struct JsonError : std::runtime_error {
    JsonError(std::size_t where, const std::string& message) : std::runtime_error(message), line(where) {}
    std::size_t line;
};

/// Throws JsonError.
JsonNode ParseJson(const std::string& text);

}  // namespace stmdcm_sim
