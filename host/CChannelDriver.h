#pragma once

#include <cstdint>

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// The value of one live attribute. The driver sets the type and points `text` at the value as
/// zero-terminated text; it owns that text until its next call.
struct ChannelAttribute {
    /// Types a manager acts on; a driver may use others, which count as a wrong type.
    enum : std::int32_t { Flag = 0, Integer = 2, Double = 6, Unset = 7 };

    std::int32_t type;
    const char* text;
};

/// The live trace channel of one CPU, owned by its channel server.
class CChannelDriver {
  public:
    /// Fills `value` with the attribute `name`. Failure is reported by an exception of any type.
    virtual void GetAttribute(const char* name, ChannelAttribute& value) = 0;

  protected:
    ~CChannelDriver() = default;
};

}  // namespace Zu::Wep::Trace
