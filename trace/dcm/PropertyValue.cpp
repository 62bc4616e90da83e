#include "trace/dcm/PropertyValue.h"

#include <cstring>

namespace Zu::Wep::Trace {

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
