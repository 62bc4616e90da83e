#include "stmdcm/change/Assignment.h"

#include <fmt/format.h>
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>
#include <optional>
#include <string_view>

#include "stmdcm/Failure.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

using Zu::Wep::Trace::FindStmProperty;
using Zu::Wep::Trace::kStmProperties;
using Zu::Wep::Trace::StmProperty;

namespace {

constexpr char kConstantProperty[] = "CycleModeDelta";

/// The numbers that a property takes, and how to say what it takes.
struct Range {
    std::int64_t least;
    std::int64_t most;
    const char* words;
};

constexpr std::int64_t kMostInteger = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kLeastInteger = std::numeric_limits<std::int32_t>::min();
constexpr Range kIntegers{kLeastInteger, kMostInteger, "a whole number from -2147483648 to 2147483647"};
constexpr Range kAddresses{kLeastInteger, std::numeric_limits<std::uint32_t>::max(),
                           "a 32-bit address, such as 0x80000000"};
constexpr Range kClocks{0, kMostInteger, "a whole number of Hz up to 2147483647, such as 200M or 1.25GHz"};
constexpr Range kFlags{0, 1, "yes or no"};

Range RangeOf(const StmProperty& property) {
    if (property.flag != nullptr) {
        return kFlags;
    }
    switch (UnitOf(property)) {
        case Unit::Hertz:
            return kClocks;
        case Unit::Address:
            return kAddresses;
        default:
            return kIntegers;
    }
}

std::optional<std::int64_t> ParseFlag(const std::string& text) {
    constexpr std::pair<const char*, std::int64_t> kWords[] = {{"yes", 1},   {"no", 0}, {"true", 1},
                                                               {"false", 0}, {"1", 1},  {"0", 0}};
    const auto* found = std::find_if(std::begin(kWords), std::end(kWords),
                                     [&](const auto& word) { return ::strcasecmp(text.c_str(), word.first) == 0; });
    return found == std::end(kWords) ? std::nullopt : std::optional(found->second);
}

/// `base` 10 or 16, the whole text.
std::optional<std::int64_t> ParseDigits(std::string_view text, int base) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    const bool isWhole = end == text.data() + text.size() && !text.empty();
    if (isWhole && error == std::errc::result_out_of_range) {
        return text.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                                   : std::numeric_limits<std::int64_t>::max();
    }
    return isWhole && error == std::errc() ? std::optional(value) : std::nullopt;
}

std::optional<std::int64_t> ParseInteger(std::string_view text) {
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    return isHexadecimal && text.find('-') == std::string_view::npos ? ParseDigits(text.substr(2), 16)
                                                                     : ParseDigits(text, 10);
}

void TrimBlanks(std::string_view& text) { text = text.substr(0, text.find_last_not_of(' ') + 1); }

/// Takes the unit off the end of `text` and gives the power of ten that its prefix stands for.
std::size_t TakeUnit(std::string_view& text) {
    for (const std::string_view hertz : {"Hz", "hz", "HZ"}) {
        if (text.ends_with(hertz)) {
            text.remove_suffix(hertz.size());
            break;
        }
    }
    TrimBlanks(text);
    constexpr std::pair<char, std::size_t> kPrefixes[] = {{'k', 3}, {'K', 3}, {'M', 6}, {'G', 9}};
    for (const auto& [prefix, power] : kPrefixes) {
        if (text.ends_with(prefix)) {
            text.remove_suffix(1);
            TrimBlanks(text);
            return power;
        }
    }
    return 0;
}

/// Exact: "1.25G" is 1250000000, and a fraction of a hertz is no clock.
std::optional<std::int64_t> ParseClock(std::string_view text) {
    const std::size_t power = TakeUnit(text);
    const std::size_t point = text.find('.');
    const std::string digits(text.substr(0, point));
    std::string fraction(point == std::string_view::npos ? "" : text.substr(point + 1));
    fraction.erase(fraction.find_last_not_of('0') + 1);
    const bool isNumber = !digits.empty() && digits != "-" && fraction.find('-') == std::string::npos;
    if (!isNumber || fraction.size() > power) {
        return std::nullopt;
    }
    return ParseDigits(digits + fraction + std::string(power - fraction.size(), '0'), 10);
}

std::optional<std::int64_t> ParseValue(const StmProperty& property, const std::string& text) {
    if (property.flag != nullptr) {
        return ParseFlag(text);
    }
    return UnitOf(property) == Unit::Hertz ? ParseClock(text) : ParseInteger(text);
}

[[noreturn]] void Refuse(const std::string& sentence) { throw Failure(sentence, Failure::Kind::Request); }

}  // namespace

const StmProperty& RequireProperty(const std::string& name) {
    const auto find = [&](auto matches) { return std::find_if(kStmProperties.begin(), kStmProperties.end(), matches); };
    const auto* found = find([&](const StmProperty& row) { return name == row.name; });
    if (found != kStmProperties.end()) {
        return *found;
    }
    if (name == kConstantProperty) {
        Refuse(fmt::format("{} is always yes and can't be set", name));
    }
    const auto* similar = find([&](const StmProperty& row) { return ::strcasecmp(name.c_str(), row.name) == 0; });
    Refuse(fmt::format("there is no property \"{}\"; {}", name,
                       similar != kStmProperties.end() ? fmt::format("did you mean {}?", similar->name)
                                                       : "stmdcm show FILE lists them all"));
}

void Assignment::ApplyTo(Zu::Wep::Trace::StmProperties& properties) const {
    SetNumber(properties, RequireProperty(name), value);
}

bool Assignment::LooksLikeOne(const std::string& text) {
    const std::string start = text.substr(0, text.find('='));
    const bool isWord = !start.empty() && std::all_of(start.begin(), start.end(),
                                                      [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; });
    return isWord && (start.size() < text.size() || FindStmProperty(start) != nullptr);
}

Assignment Assignment::Parse(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
        Refuse(fmt::format("\"{}\" is no NAME=VALUE", text));
    }
    const StmProperty& property = RequireProperty(text.substr(0, equals));
    const Range range = RangeOf(property);
    const std::optional<std::int64_t> value = ParseValue(property, text.substr(equals + 1));
    if (!value || *value < range.least || *value > range.most) {
        Refuse(fmt::format("{}: \"{}\" won't do, it takes {}", property.name, text.substr(equals + 1), range.words));
    }
    return {property.name, static_cast<std::int32_t>(*value)};
}

}  // namespace stmdcm
