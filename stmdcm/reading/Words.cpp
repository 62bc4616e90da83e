#include "stmdcm/reading/Words.h"

#include <fmt/format.h>

#include <algorithm>
#include <ctime>

namespace stmdcm {

namespace {

std::string PropertyValueInWords(const Property& property, std::int32_t value) {
    return property.isFlag ? InWords(Unit::None, value != 0) : InWords(property.unit, value);
}

std::string Address(std::int64_t value) { return fmt::format("{:#010x}", static_cast<std::uint32_t>(value)); }

}  // namespace

std::string InWords(Unit unit, std::int64_t value) {
    switch (unit) {
        case Unit::Hertz:
            return Frequency(value);
        case Unit::Address:
            return Address(value);
        case Unit::Mask:
            return fmt::format("{:#x}", value);
        case Unit::Job:
            return value < 0 ? fmt::format("{} (none)", value) : fmt::format("{}", value);
        case Unit::UnixTime:
            return UtcTime(value, ' ');
        case Unit::None:
            break;
    }
    return fmt::format("{}", value);
}

std::string InWords(Unit /*unit*/, bool value) { return value ? "yes" : "no"; }

std::string InWords(Unit /*unit*/, std::string_view value) {
    std::string words;
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        words += byte < 0x20 || byte == 0x7f ? fmt::format("\\x{:02x}", byte) : std::string(1, c);
    }
    return words;
}

std::string InWords(Unit unit, const std::optional<std::int64_t>& value) { return value ? InWords(unit, *value) : ""; }

std::string InWords(const Property& property) { return PropertyValueInWords(property, property.value); }

std::string DefaultInWords(const Property& property) { return PropertyValueInWords(property, property.defaultValue); }

std::string Frequency(std::int64_t hertz) {
    struct Prefix {
        std::int64_t factor;
        int decimals;
        const char* name;
    };
    constexpr Prefix kPrefixes[] = {{1'000'000'000, 9, "GHz"}, {1'000'000, 6, "MHz"}, {1'000, 3, "kHz"}};
    const std::int64_t magnitude = hertz < 0 ? -hertz : hertz;
    const auto* prefix = std::find_if(std::begin(kPrefixes), std::end(kPrefixes),
                                      [magnitude](const Prefix& row) { return magnitude >= row.factor; });
    if (prefix == std::end(kPrefixes)) {
        return fmt::format("{} Hz", hertz);
    }
    std::string digits =
        fmt::format("{}.{:0{}}", magnitude / prefix->factor, magnitude % prefix->factor, prefix->decimals);
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.back() == '.') {
        digits.pop_back();
    }
    return fmt::format("{}{} {}", hertz < 0 ? "-" : "", digits, prefix->name);
}

std::string SizeInWords(std::uint64_t bytes) {
    constexpr const char* kUnits[] = {"KiB", "MiB", "GiB", "TiB"};
    if (bytes < 1024) {
        return bytes == 1 ? "1 byte" : fmt::format("{} bytes", bytes);
    }
    double value = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    // What would be rounded up to 1024 takes the next unit.
    while (value >= 1023.95 && unit + 1 < std::size(kUnits)) {
        value /= 1024;
        ++unit;
    }
    return fmt::format("{:.1f} {}", value, kUnits[unit]);
}

std::string UtcTime(std::int64_t seconds, char separator) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    char text[64];
    if (::gmtime_r(&time, &parts) == nullptr || std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%SZ", &parts) == 0) {
        return fmt::format("{}", seconds);
    }
    std::string result = text;
    std::replace(result.begin(), result.end(), ' ', separator);
    return result;
}

}  // namespace stmdcm
