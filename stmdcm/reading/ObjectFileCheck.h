#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "stmdcm/pins/PinSection.h"
#include "stmdcm/reading/Configuration.h"
#include "stmdcm/reading/Findings.h"

namespace stmdcm {

/// The entries of a payload of DCM_COMMON (docs/object-files.md), with what is on disk now. False when they don't fill
/// it.
bool ParseObjectFiles(std::string_view payload, std::vector<ObjectFile>& files);

/// Gives each file its pin.
void AttachPins(const PinList& pins, std::vector<ObjectFile>& files);

/// Those entries, and finds what is wrong with them and with the files that they name, which an `examiner` holds
/// against their pins.
std::vector<ObjectFile> ReadObjectFiles(std::string_view payload, const Place& place, Findings& findings,
                                        const PinList& pins = {}, ImageExaminer* examiner = nullptr);

/// Sentences: which of them can't be looked at, and why. Nobody knows whether they are missing.
std::vector<std::string> NotLookedAt(const std::vector<ObjectFile>& files);

}  // namespace stmdcm
