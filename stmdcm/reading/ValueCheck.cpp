#include "stmdcm/reading/ValueCheck.h"

#include <fmt/format.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

using Zu::Wep::Trace::ValueShape;

namespace {

/// The number that a text begins with, and what is not to be kept of it.
struct Number {
    bool isNumber = false;
    bool hasRest = false;  ///< text or a fraction behind it
    bool isSigned32 = false;
    bool isUnsigned32 = false;
};

template <class T>
void Classify(Number& number, T value) {
    using Signed = std::numeric_limits<std::int32_t>;
    using Unsigned = std::numeric_limits<std::uint32_t>;
    number.isSigned32 = value >= Signed::min() && value <= Signed::max();
    number.isUnsigned32 = value >= 0 && value <= Unsigned::max();
}

Number ReadInteger(const char* text) {
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text, &end, 10);
    Number number{end != text, *end != '\0'};
    if (errno == 0) {
        Classify(number, value);
    }
    return number;
}

Number ReadClock(const char* text) {
    char* end = nullptr;
    const double value = std::strtod(text, &end);
    const double whole = std::trunc(value);
    Number number{end != text, *end != '\0' || (std::isfinite(value) && whole != value)};
    Classify(number, whole);
    return number;
}

bool IsFlag(ValueShape shape) {
    return shape == ValueShape::Flag || shape == ValueShape::NumericFlag || shape == ValueShape::LongFlag;
}

/// The kind of each fault, and what is wrong in words.
std::vector<std::pair<const FindingKind*, const char*>> Faults(ValueShape shape, const std::string& value) {
    if (shape == ValueShape::Text) {
        return {};
    }
    if (IsFlag(shape)) {
        if (value == "0" || value == "1") {
            return {};
        }
        return {{&Kind("T-NOT-0-OR-1"), "is neither 0 nor 1"}};
    }
    const Number number = shape == ValueShape::Clock ? ReadClock(value.c_str()) : ReadInteger(value.c_str());
    if (!number.isNumber) {
        return {{&Kind("T-NOT-A-NUMBER"), "is not a number"}};
    }
    std::vector<std::pair<const FindingKind*, const char*>> faults;
    if (number.hasRest) {
        faults.emplace_back(&Kind("T-PARTLY-NUMBER"), "is only partly a whole number");
    }
    if (!number.isSigned32 && !number.isUnsigned32) {
        faults.emplace_back(&Kind("T-NUMBER-WRAPPED"), "does not fit 32 bits");
    } else if (!number.isSigned32 && shape != ValueShape::Unsigned) {
        faults.emplace_back(&Kind("T-NUMBER-SIGN"), "fits 32 bits only without a sign");
    }
    return faults;
}

}  // namespace

std::vector<Finding> CheckValue(ValueShape shape, std::string_view key, const std::string& value, const Place& place) {
    std::vector<Finding> findings;
    const std::int32_t number = Zu::Wep::Trace::NumberFromText(shape, value);
    const std::int64_t reading =
        shape == ValueShape::Unsigned ? static_cast<std::uint32_t>(number) : std::int64_t{number};
    for (const auto& [kind, fault] : Faults(shape, value)) {
        findings.push_back(
            {kind, place, fmt::format("{} = {} {}", key, Quoted(value), fault), fmt::format("reads as {}", reading)});
    }
    return findings;
}

}  // namespace stmdcm
