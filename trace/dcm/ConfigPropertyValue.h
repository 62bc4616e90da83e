#pragma once

#include <cstdint>
#include <string>

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

    std::int32_t type = 0;
    std::string text;  ///< left alone by the STM properties
    /// Reading a boolean writes only `boolean`, its first byte. Setting one reads `integer`, so clear the whole
    /// union before setting through `boolean`; "STM_VornLib_Import" alone is set from `boolean`.
    Value value{.real = 0.0};
};

}  // namespace Zu::Wep::Trace
