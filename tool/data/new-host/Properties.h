#pragma once

#include <cstdint>

#include "trace/dcm/StmDeviceConfigManagerIF.h"

/// Numbers as they are, flags as 0 and 1. Throws std::runtime_error where there is no such property.
std::int32_t Property(Zu::Wep::Trace::CDeviceConfigManager& manager, const char* name);

/// Throws std::runtime_error where there is no such property.
void SetProperty(Zu::Wep::Trace::StmDeviceConfigManagerIF& manager, const char* name, std::int32_t value);

/// On standard output, those that are not at their default.
void PrintProperties(Zu::Wep::Trace::CDeviceConfigManager& manager);
