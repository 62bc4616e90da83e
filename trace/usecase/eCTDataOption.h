#pragma once

#include <cstdint>

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// A data option of a CP tracer: the bit number in the data-options mask. Only the low five bits of a value count.
enum eCTDataOption : std::uint32_t {
    CT_DATA_OPTION_0 = 0,
    CT_DATA_OPTION_1 = 1,
    CT_DATA_OPTION_2 = 2,
    CT_DATA_OPTION_3 = 3,
    CT_DATA_OPTION_4 = 4,
    CT_DATA_OPTION_5 = 5,
    CT_DATA_OPTION_6 = 6,
    CT_DATA_OPTION_7 = 7,
    CT_DATA_OPTION_LAST = 31
};

}  // namespace Zu::Wep::Trace
