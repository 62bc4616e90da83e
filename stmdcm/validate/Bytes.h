#pragma once

// The bytes of files as other programs than the library under question write them (docs/tdf.md).

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "trace/format/ObjectFileSection.h"

namespace stmdcm::validate {

/// A section, with `lie` added to its length.
std::string SectionBytes(std::string_view name, std::uint32_t version, std::string_view payload, std::int64_t lie = 0);

std::string DeviceSection(std::string_view text = "serial=7\n");
std::string StmSection(std::string_view settings);
std::string ObjectFileSection(const std::vector<Zu::Wep::Trace::ObjectFileEntry>& entries);

/// A capture of these sections.
std::string CaptureBytes(std::string_view sections);
/// What a host leaves for a manager to save into.
std::string BareCapture();

struct FoundSection {
    std::size_t offset = 0;  ///< of its header
    std::uint32_t version = 0;
    std::string name;
    std::string payload;
};

/// The sections of a capture, in order, up to one that is not whole.
std::vector<FoundSection> SectionsOf(const std::string& capture);
/// The payload of the oldest section of that name and version 1; "(none)" where there is none.
std::string PayloadOf(const std::string& capture, std::string_view name);
/// Where the payload of the last section begins in a capture that ends with it.
std::size_t LastPayloadOffset(const std::string& capture);

}  // namespace stmdcm::validate
