#pragma once

#include <string>

namespace Zu::Wep::Trace {

/// The payload of the first section of that name and version, as much of it as the file holds, whatever the section's
/// length field says. Null arguments are as for TDFHandler.
/// An empty payload is none to fail on, though LoadSectionData refuses the buffer of size 0 that it would need.
/// Throws `vornError` where GetSectionDataLengthInBytes does, and for a failed read, with TDFHandler's texts.
std::string ReadSection(const char* path, const char* name, unsigned int version);

}  // namespace Zu::Wep::Trace
