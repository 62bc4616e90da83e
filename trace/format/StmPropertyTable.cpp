#include "trace/format/StmPropertyTable.h"

#include <algorithm>
#include <cstdlib>

namespace Zu::Wep::Trace {

const StmProperty* FindStmProperty(std::string_view name) {
    const auto* found = std::find_if(kStmProperties.begin(), kStmProperties.end(),
                                     [name](const StmProperty& property) { return name == property.name; });
    return found == kStmProperties.end() ? nullptr : found;
}

std::int32_t IntegerFromText(const char* text) { return static_cast<std::int32_t>(std::strtol(text, nullptr, 10)); }

std::int32_t ClockFromText(const char* text) {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    const double number = std::strtod(text, nullptr);
    if (!(number >= -kLimit && number < kLimit)) {
        return 0;  // no 64-bit integer: the machine's own conversion leaves the low half clear
    }
    return static_cast<std::int32_t>(static_cast<std::int64_t>(number));
}

void SetFromText(StmProperties& properties, const StmProperty& property, const std::string& text) {
    switch (property.conversion) {
        case TextConversion::Integer:
            properties.*property.integer = IntegerFromText(text.c_str());
            break;
        case TextConversion::Clock:
            properties.*property.integer = ClockFromText(text.c_str());
            break;
        case TextConversion::Flag:
            properties.*property.flag = text != "0";
            break;
        case TextConversion::NumericFlag:
            properties.*property.flag = IntegerFromText(text.c_str()) != 0;
            break;
    }
}

bool SetFromText(StmProperties& properties, std::string_view name, std::string_view text) {
    const StmProperty* property = FindStmProperty(name);
    if (property == nullptr) {
        return false;
    }
    SetFromText(properties, *property, std::string(text));
    return true;
}

std::int32_t NumberOf(const StmProperties& properties, const StmProperty& property) {
    return property.integer != nullptr ? properties.*property.integer : std::int32_t{properties.*property.flag};
}

}  // namespace Zu::Wep::Trace
