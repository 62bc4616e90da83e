#pragma once

#include <string>

namespace Zu::Wep::Trace {

/// The payload of the first section of that name and version, as much of it as the file holds, whatever the section's
/// length field says. Null arguments are as for TDFHandler.
/// Throws `vornError` where GetSectionDataLengthInBytes and then LoadSectionData into a buffer of that length do, with
/// their texts: for a payload that is stated to be empty, too (docs/tdf.md).
std::string ReadSection(const char* path, const char* name, unsigned int version);

}  // namespace Zu::Wep::Trace
