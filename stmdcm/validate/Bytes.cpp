#include "stmdcm/validate/Bytes.h"

#include <algorithm>

#include "trace/format/SectionLayout.h"
#include "trace/format/StmSections.h"

namespace stmdcm::validate {

using namespace Zu::Wep::Trace;

std::string SectionBytes(std::string_view name, std::uint32_t version, std::string_view payload, std::int64_t lie) {
    const auto length = static_cast<std::int64_t>(SectionHeader::kSize + name.size() + payload.size());
    return EncodeSectionStart(static_cast<std::uint32_t>(length + lie), name, version).append(payload);
}

std::string DeviceSection(std::string_view text) {
    return SectionBytes(kDeviceSectionName, kDeviceSectionVersion, text);
}

std::string StmSection(std::string_view settings) {
    return SectionBytes(kStmSectionName, kStmSectionVersion, settings);
}

std::string ObjectFileSection(const std::vector<ObjectFileEntry>& entries) {
    std::string payload;
    for (const ObjectFileEntry& entry : entries) {
        AppendObjectFileEntry(payload, entry);
    }
    return SectionBytes(kCommonSectionName, kCommonSectionVersion, payload);
}

std::string CaptureBytes(std::string_view sections) { return std::string(kTDFIdentifier).append(sections); }

std::string BareCapture() { return CaptureBytes(DeviceSection()); }

std::vector<FoundSection> SectionsOf(const std::string& capture) {
    std::vector<FoundSection> sections;
    for (std::size_t offset = kFirstSectionOffset; offset + SectionHeader::kSize <= capture.size();) {
        const SectionHeader header = DecodeSectionHeader(capture.data() + offset);
        const std::size_t start = SectionHeader::kSize + std::size_t{header.nameLength};
        if (header.length < start || header.length > capture.size() - offset) {
            break;
        }
        sections.push_back({offset, header.version, capture.substr(offset + SectionHeader::kSize, header.nameLength),
                            capture.substr(offset + start, header.length - start)});
        offset += header.length;
    }
    return sections;
}

std::string PayloadOf(const std::string& capture, std::string_view name) {
    const std::vector<FoundSection> sections = SectionsOf(capture);
    const auto found = std::find_if(sections.begin(), sections.end(), [&](const FoundSection& section) {
        return section.name == name && section.version == 1;
    });
    return found == sections.end() ? "(none)" : found->payload;
}

std::size_t LastPayloadOffset(const std::string& capture) {
    return capture.size() - SectionsOf(capture).back().payload.size();
}

}  // namespace stmdcm::validate
