#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "stmdcm/reading/Findings.h"
#include "trace/format/ValueShape.h"

namespace stmdcm {

/// What is wrong with a value: findings that say what it reads as. None for a text.
std::vector<Finding> CheckValue(Zu::Wep::Trace::ValueShape shape, std::string_view key, const std::string& value,
                                const Place& place);

}  // namespace stmdcm
