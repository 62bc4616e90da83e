#pragma once

// The name under which a save's first section is written, until the save is whole (docs/tdf.md, "Saving").

#include <string_view>

#include "trace/format/ObjectFileSection.h"

namespace Zu::Wep::Trace {

/// As long as the true name, which takes its place.
inline constexpr std::string_view kUnfinishedName = "unfinished";
static_assert(kUnfinishedName.size() == kCommonSection.name.size());

/// Also while the true name is half written: each byte is of the one or the other.
constexpr bool IsUnfinishedName(std::string_view name) {
    if (name.size() != kUnfinishedName.size() || name == kCommonSection.name) {
        return false;
    }
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] != kUnfinishedName[i] && name[i] != kCommonSection.name[i]) {
            return false;
        }
    }
    return true;
}

}  // namespace Zu::Wep::Trace
