#pragma once

// Where integers meet bytes: little-endian, whatever the machine's own order is.

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace Zu::Wep::Trace {

/// Writes the sizeof(T) bytes of `value` at `out`.
template <std::integral T>
constexpr void StoreLittleEndian(T value, char* out) {
    using Unsigned = std::make_unsigned_t<T>;
    auto rest = static_cast<Unsigned>(value);
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        out[i] = static_cast<char>(static_cast<unsigned char>(rest >> (8 * i)));
    }
}

/// Reads sizeof(T) bytes at `in`.
template <std::integral T>
T LoadLittleEndian(const char* in) {
    using Unsigned = std::make_unsigned_t<T>;
    Unsigned value = 0;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&value, in, sizeof value);  // the loop below is no single load to every compiler
        return static_cast<T>(value);
    }
    for (std::size_t i = sizeof(T); i-- > 0;) {
        value = static_cast<Unsigned>(static_cast<Unsigned>(value << 8) | static_cast<unsigned char>(in[i]));
    }
    return static_cast<T>(value);
}

}  // namespace Zu::Wep::Trace
