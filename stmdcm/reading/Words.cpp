#include "stmdcm/reading/Words.h"

#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <utility>
#include <vector>

namespace stmdcm {

namespace {

std::string PropertyValueInWords(const Property& property, std::int32_t value) {
    return property.isFlag ? InWords(Unit::None, value != 0) : InWords(property.unit, value);
}

}  // namespace

std::string InWords(Unit unit, std::int64_t value) {
    switch (unit) {
        case Unit::Hertz:
            return Frequency(value);
        case Unit::Address:
            return fmt::format("{:#010x}", static_cast<std::uint32_t>(value));
        case Unit::Mask:
            return fmt::format("{:#x}", value);
        case Unit::Job:
            return value < 0 ? fmt::format("{} (none)", value) : fmt::format("{}", value);
        case Unit::UnixTime:
            return UtcTime(value, ' ');
        case Unit::None:
            break;
    }
    return std::to_string(value);
}

std::string InWords(Unit /*unit*/, bool value) { return value ? "yes" : "no"; }

std::string InWords(Unit /*unit*/, std::string_view value) { return Escaped(value); }

std::string Shown(std::string_view name) {
    constexpr std::string_view kCut = "...";
    constexpr std::size_t kBefore = (kMaxColumns - kCut.size()) / 2;
    constexpr std::size_t kBehind = kMaxColumns - kCut.size() - kBefore;
    const std::string words = Escaped(name);
    std::vector<std::size_t> starts;  // of each character
    for (std::size_t place = 0; place < words.size();
         place += FirstCharacter(std::string_view(words).substr(place)).length) {
        starts.push_back(place);
    }
    if (starts.size() <= kMaxColumns) {
        return words;
    }
    return fmt::format("{}{}{}", words.substr(0, starts[kBefore]), kCut, words.substr(starts[starts.size() - kBehind]));
}

std::string InWords(Unit unit, const std::optional<std::int64_t>& value) { return value ? InWords(unit, *value) : ""; }

std::string InWords(const Property& property) { return PropertyValueInWords(property, property.value); }

std::string DefaultInWords(const Property& property) { return PropertyValueInWords(property, property.defaultValue); }

std::string Frequency(std::int64_t hertz) {
    constexpr std::pair<std::int64_t, const char*> kPrefixes[] = {
        {1'000'000'000, "GHz"}, {1'000'000, "MHz"}, {1'000, "kHz"}};
    for (const auto& [factor, name] : kPrefixes) {
        if (hertz >= factor || hertz <= -factor) {
            return fmt::format("{} {}", static_cast<double>(hertz) / static_cast<double>(factor), name);
        }
    }
    return fmt::format("{} Hz", hertz);
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
