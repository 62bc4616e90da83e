#pragma once

#include <cstdint>
#include <string>

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// One counter of a statistics-counter use case; the text stands after "#number=" in the block.
struct _CounterLineInfo {
    std::uint32_t number = 0;
    std::string text;
};

}  // namespace Zu::Wep::Trace
