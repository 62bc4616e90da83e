#pragma once

// The bytes of a trace data file, see docs/tdf.md.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "trace/format/LittleEndian.h"

namespace Zu::Wep::Trace {

inline constexpr std::string_view kTDFIdentifier = "TDF2";
inline constexpr std::uint64_t kFirstSectionOffset = kTDFIdentifier.size();
/// Offsets have 32 bits, the one behind the last byte included.
inline constexpr std::uint64_t kMaxFileSize = 0xFFFFFFFF;

/// The longest section and name that a search passes; nothing keeps a writer from exceeding them.
inline constexpr std::uint32_t kMaxSectionLength = 0x8000000;
inline constexpr std::uint32_t kMaxNameLength = 4095;

/// What stands in front of a section's name and payload.
struct SectionHeader {
    static constexpr std::size_t kLengthOffset = 0;
    static constexpr std::size_t kVersionOffset = 4;
    static constexpr std::size_t kNameLengthOffset = 8;
    static constexpr std::size_t kSize = 12;
    static constexpr std::size_t kLengthSize = kVersionOffset - kLengthOffset;

    std::uint32_t length = 0;  ///< of header, name and payload together
    std::uint32_t version = 0;
    std::uint32_t nameLength = 0;
};

/// What a section is found by. Borrows the name.
struct SectionKey {
    std::string_view name;
    std::uint32_t version = 0;
    bool operator==(const SectionKey&) const = default;
};

/// Reads the `SectionHeader::kSize` bytes at `bytes`.
inline SectionHeader DecodeSectionHeader(const char* bytes) {
    return {LoadLittleEndian<std::uint32_t>(bytes + SectionHeader::kLengthOffset),
            LoadLittleEndian<std::uint32_t>(bytes + SectionHeader::kVersionOffset),
            LoadLittleEndian<std::uint32_t>(bytes + SectionHeader::kNameLengthOffset)};
}

/// The bytes of a header.
std::string EncodeSectionHeader(const SectionHeader& header);

/// The length field alone, and the version field.
std::string EncodeSectionLength(std::uint32_t length);
std::string EncodeSectionVersion(std::uint32_t version);
std::uint32_t DecodeSectionLength(const char* bytes);

/// Header and name of a section with `length` in its length field. The name must be shorter than 4 GiB.
std::string EncodeSectionStart(std::uint32_t length, std::string_view name, std::uint32_t version);

}  // namespace Zu::Wep::Trace
