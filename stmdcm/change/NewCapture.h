#pragma once

#include <string>
#include <vector>

#include "stmdcm/capture/CaptureEditor.h"
#include "stmdcm/reading/Reading.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

/// The bytes of a capture that holds these sections and nothing else.
std::string NewCapture(const std::vector<NewSection>& sections);

/// A device identification, without which a manager loads nothing.
inline NewSection DeviceSection(std::string_view text = kNoDeviceText) {
    return {Zu::Wep::Trace::kDeviceSectionName, Zu::Wep::Trace::kDeviceSectionVersion, std::string(text)};
}

}  // namespace stmdcm
