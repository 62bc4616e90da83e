#pragma once

#include "trace/format/SectionLayout.h"

namespace Zu::Wep::Trace {

/// The capture sections of the STM's configuration: settings text (docs/settings-text.md), both.
inline constexpr char kStmSectionName[] = "STMDECODERINFO";
inline constexpr unsigned kStmSectionVersion = 1;
inline constexpr SectionKey kStmSection{kStmSectionName, kStmSectionVersion};
inline constexpr char kDeviceSectionName[] = "DEVID";  ///< written by hosts, by no manager
inline constexpr unsigned kDeviceSectionVersion = 1;
inline constexpr SectionKey kDeviceSection{kDeviceSectionName, kDeviceSectionVersion};

}  // namespace Zu::Wep::Trace
