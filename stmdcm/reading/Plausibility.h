#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "stmdcm/reading/Findings.h"
#include "trace/format/StmProperties.h"

namespace stmdcm {

// Values that the formats take, but that no target has or nobody has set (docs/check.md, "Values").

/// Sentences: the warnings among them, of the values that differ from the old ones.
std::vector<std::string> NewWarnings(const Zu::Wep::Trace::StmProperties& old,
                                     const Zu::Wep::Trace::StmProperties& changed);

/// Where a value was set, and whether its text fits 32 bits.
struct Origin {
    Place place;
    bool fits = true;
};

/// That of the property in that place of the table; nothing for one that is not asked about.
using OriginOf = std::function<std::optional<Origin>(std::size_t)>;

/// Adds a finding for each of them.
void TellDoubtfulValues(const Zu::Wep::Trace::StmProperties& properties, const OriginOf& originOf, Findings& findings);

}  // namespace stmdcm
