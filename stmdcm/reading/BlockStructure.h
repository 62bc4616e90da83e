#pragma once

#include "stmdcm/reading/BlockFindings.h"

namespace stmdcm {

/// Looks at blocks with the eyes of a person, after the three records have read them, and tells where those have seen
/// something else.
void CheckStructure(const Zu::Wep::Trace::BlockText& text, const BlockFindings& read, const Place& place,
                    Findings& findings);

}  // namespace stmdcm
