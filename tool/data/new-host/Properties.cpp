#include "Properties.h"

#include <iostream>
#include <stdexcept>
#include <string>

#include "trace/dcm/PropertyNames.h"

using namespace Zu::Wep::Trace;

std::int32_t Property(CDeviceConfigManager& manager, const char* name) {
    ConfigPropertyValue value;
    if (!manager.GetProperty(name, value)) {
        throw std::runtime_error(std::string("there is no property ") + name);
    }
    return value.type == ConfigPropertyValue::Boolean ? value.value.boolean : value.value.integer;
}

void SetProperty(StmDeviceConfigManagerIF& manager, const char* name, std::int32_t value) {
    ConfigPropertyValue number(value);
    if (!manager.SetSTMProperty(name, number)) {
        throw std::runtime_error(std::string("there is no property to set called ") + name);
    }
}

void PrintProperties(CDeviceConfigManager& manager) {
    for (const PropertyDescription& property : kPropertyDescriptions) {
        const std::int32_t value = Property(manager, property.name);
        if (value != property.defaultValue) {
            std::cout << "  " << property.name << " = " << value << ' ' << property.unit << '\n';
        }
    }
}
