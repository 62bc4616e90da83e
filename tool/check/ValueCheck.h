#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/check/Findings.h"

namespace stmdcm {

/// How a reader turns the text of a value into what it keeps.
enum class ValueRule {
    Text,
    Signed,       ///< strtol in base 10, low 32 bits
    Unsigned,     ///< the same 32 bits without a sign
    Clock,        ///< strtod, cut to 64 bits, low 32 bits
    Flag,         ///< true unless exactly "0"
    NumericFlag,  ///< true when the 32-bit integer is not 0
    LongFlag,     ///< true when the 64-bit integer is not 0
};

/// What is wrong with a value: findings that say what it reads as. None for a text.
std::vector<Finding> CheckValue(ValueRule rule, std::string_view key, const std::string& value, const Place& place);

}  // namespace stmdcm
