#pragma once

#include "trace/dcm/ConfigPropertyValue.h"
#include "trace/format/StmPropertyTable.h"

namespace Zu::Wep::Trace {

/// Sets `property` from what a host gave; the type code is not looked at.
void SetFromValue(StmProperties& properties, const StmProperty& property, const ConfigPropertyValue& value);

/// Makes `value` a boolean; the bytes of the union behind the first stay as they were.
void SetBoolean(ConfigPropertyValue& value, bool boolean);

/// Writes `property` into `value`: the type code and the integer, or only the boolean byte.
void GetValue(const StmProperties& properties, const StmProperty& property, ConfigPropertyValue& value);

}  // namespace Zu::Wep::Trace
