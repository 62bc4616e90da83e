#include "trace/format/SectionLayout.h"

namespace Zu::Wep::Trace {

namespace {

std::string EncodeField(std::uint32_t value) {
    std::string bytes(sizeof value, '\0');
    StoreLittleEndian(value, bytes.data());
    return bytes;
}

}  // namespace

std::string EncodeSectionHeader(const SectionHeader& header) {
    std::string bytes(SectionHeader::kSize, '\0');
    StoreLittleEndian(header.length, bytes.data() + SectionHeader::kLengthOffset);
    StoreLittleEndian(header.version, bytes.data() + SectionHeader::kVersionOffset);
    StoreLittleEndian(header.nameLength, bytes.data() + SectionHeader::kNameLengthOffset);
    return bytes;
}

std::string EncodeSectionLength(std::uint32_t length) { return EncodeField(length); }

std::string EncodeSectionVersion(std::uint32_t version) { return EncodeField(version); }

std::uint32_t DecodeSectionLength(const char* bytes) { return LoadLittleEndian<std::uint32_t>(bytes); }

std::string EncodeSectionStart(std::uint32_t length, std::string_view name, std::uint32_t version) {
    return EncodeSectionHeader({length, version, static_cast<std::uint32_t>(name.size())}).append(name);
}

}  // namespace Zu::Wep::Trace
