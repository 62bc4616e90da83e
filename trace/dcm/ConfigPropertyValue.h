#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// A property's value on its way between host and manager.
struct ConfigPropertyValue {
    /// The type codes in use; setting a property does not look at the code.
    enum : std::int32_t { Integer = 2, Boolean = 5 };

    union Value {
        std::int32_t integer;
        bool boolean;
        double real;
    };

    ConfigPropertyValue() = default;
    /// What setting a property reads, filled for any of them: all 8 bytes of the union, so that the integer, which
    /// counts for numbers and flags, and the boolean byte, which counts for "STM_VornLib_Import", say the same.
    explicit ConfigPropertyValue(std::int32_t number) : type(Integer) { value.integer = number; }
    explicit ConfigPropertyValue(bool flag) : type(Boolean) { value.integer = flag ? 1 : 0; }
    ConfigPropertyValue(std::int32_t typeCode, std::string itsText, Value its)
        : type(typeCode), text(std::move(itsText)), value(its) {}
    explicit ConfigPropertyValue(double) = delete;  // no property is a real number; its integer would be half of one
    explicit ConfigPropertyValue(const void*) = delete;  // no property is a text

    std::int32_t type = 0;
    std::string text;  ///< left alone by the STM properties
    /// Reading a boolean writes only `boolean`, its first byte. Setting one reads `integer`, so clear the whole
    /// union before setting through `boolean`; "STM_VornLib_Import" alone is set from `boolean`.
    Value value = Value();  // unlike {}, which may leave all but the first member's bytes as they are
};

}  // namespace Zu::Wep::Trace
