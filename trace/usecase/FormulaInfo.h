#pragma once

#include <cstdint>
#include <string>

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// One formula of a statistics-counter use case: counters combined into a value with a unit.
struct FormulaInfo {
    std::string name;
    std::string formula;
    std::string unit;
    std::uint32_t tagNumber = 0;  ///< Computed from the formula text when a block is read; never written.
    std::uint32_t ofmask = 0;     ///< Output mask.
};

}  // namespace Zu::Wep::Trace
