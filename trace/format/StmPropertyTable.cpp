#include "trace/format/StmPropertyTable.h"

#include <cstdlib>

namespace Zu::Wep::Trace {

namespace {

std::int32_t IntegerFromText(const char* text) { return static_cast<std::int32_t>(std::strtol(text, nullptr, 10)); }

std::int32_t ClockFromText(const char* text) {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    const double number = std::strtod(text, nullptr);
    if (!(number >= -kLimit && number < kLimit)) {
        return 0;  // no 64-bit integer: the machine's own conversion leaves the low half clear
    }
    return static_cast<std::int32_t>(static_cast<std::int64_t>(number));
}

}  // namespace

std::int32_t NumberFromText(ValueShape shape, const std::string& text) {
    switch (shape) {
        case ValueShape::Clock:
            return ClockFromText(text.c_str());
        case ValueShape::Flag:
            return text != "0" ? 1 : 0;
        case ValueShape::NumericFlag:
            return IntegerFromText(text.c_str()) != 0 ? 1 : 0;
        case ValueShape::LongFlag:
            return std::strtol(text.c_str(), nullptr, 10) != 0 ? 1 : 0;
        default:
            return IntegerFromText(text.c_str());
    }
}

bool SetFromText(StmProperties& properties, std::string_view name, std::string_view text) {
    const StmProperty* property = FindStmProperty(name);
    if (property != nullptr) {
        SetNumber(properties, *property, NumberFromText(property->shape, std::string(text)));
    }
    return property != nullptr;
}

void SetNumber(StmProperties& properties, const StmProperty& property, std::int32_t number) {
    if (property.integer != nullptr) {
        properties.*property.integer = number;
    } else {
        properties.*property.flag = number != 0;
    }
}

std::int32_t NumberOf(const StmProperties& properties, const StmProperty& property) {
    return property.integer != nullptr ? properties.*property.integer : std::int32_t{properties.*property.flag};
}

}  // namespace Zu::Wep::Trace
