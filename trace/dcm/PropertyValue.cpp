#include "trace/dcm/PropertyValue.h"

#include <cstring>
#include <string_view>

#include "trace/dcm/PropertyNames.h"

namespace Zu::Wep::Trace {

namespace {

/// Whether hosts are told of the same properties.
constexpr bool AreDescribed() {
    constexpr StmProperties kDefaults;
    for (std::size_t i = 0; i < kStmProperties.size(); ++i) {
        const StmProperty& property = kStmProperties[i];
        const PropertyDescription& described = kPropertyDescriptions[i];
        const bool isFlag = property.flag != nullptr;
        const std::int32_t number = isFlag ? std::int32_t{kDefaults.*property.flag} : kDefaults.*property.integer;
        const bool isClock = property.shape == ValueShape::Clock;
        if (std::string_view(property.name) != described.name || number != described.defaultValue ||
            isFlag != (described.type == ConfigPropertyValue::Boolean) ||
            isClock != (described.unit == std::string_view("Hz"))) {
            return false;
        }
    }
    return kStmProperties.size() == kPropertyDescriptions.size();
}
static_assert(AreDescribed());

}  // namespace

void SetFromValue(StmProperties& properties, const StmProperty& property, const ConfigPropertyValue& value) {
    std::int32_t number = value.value.integer;
    if (property.flagSource == FlagSource::BooleanByte) {
        unsigned char byte = 0;  // a host's byte may be neither 0 nor 1, which no bool may hold
        std::memcpy(&byte, &value.value, sizeof byte);
        number = byte;
    }
    SetNumber(properties, property, number);
}

void GetValue(const StmProperties& properties, const StmProperty& property, ConfigPropertyValue& value) {
    if (property.integer != nullptr) {
        value.type = ConfigPropertyValue::Integer;
        value.value.integer = properties.*property.integer;
    } else {
        SetBoolean(value, properties.*property.flag);
    }
}

void SetBoolean(ConfigPropertyValue& value, bool boolean) {
    value.type = ConfigPropertyValue::Boolean;
    std::memcpy(&value.value, &boolean, sizeof boolean);  // the union's other bytes stay as they were
}

}  // namespace Zu::Wep::Trace
