#pragma once

namespace Zu::Wep::Trace {

/// What the text of a value is read as (docs/settings-text.md, docs/use-case-blocks.md). No conversion refuses a text.
enum class ValueShape {
    Text,
    Signed,       ///< strtol in base 10, low 32 bits
    Unsigned,     ///< the same 32 bits without a sign
    Clock,        ///< strtod, cut to 64 bits, low 32 bits
    Flag,         ///< true unless exactly "0"
    NumericFlag,  ///< true when the 32-bit integer is not 0
    LongFlag,     ///< true when the 64-bit integer is not 0
};

}  // namespace Zu::Wep::Trace
