#include "stmdcm/recover/HeaderSearch.h"

#include <algorithm>
#include <string_view>

#include "stmdcm/recover/HeaderRules.h"
#include "trace/format/LittleEndian.h"
#include "trace/format/SectionLayout.h"

namespace stmdcm {

using Zu::Wep::Trace::LoadLittleEndian;
using Zu::Wep::Trace::SectionHeader;

namespace {

constexpr std::uint64_t kSearchBlock = 256U << 10;
constexpr std::uint64_t kOverlap = SectionHeader::kSize + kMaxFoundName;

/// Of a name that the bytes don't hold whole, the beginning counts.
bool MayBeHeader(std::string_view bytes) {
    if (bytes.size() < SectionHeader::kSize) {
        return false;
    }
    const auto length = LoadLittleEndian<std::uint32_t>(bytes.data() + SectionHeader::kNameLengthOffset);
    return length <= kMaxFoundName && IsPlausibleName(bytes.substr(SectionHeader::kSize, length));
}

}  // namespace

std::uint64_t HeaderSearch::Find(std::uint64_t from, std::uint64_t to, const IsHeader& isHeader) {
    m_buffer.resize(kSearchBlock + kOverlap);
    for (std::uint64_t position = from; position < to;) {
        // A header may begin with zeros that are in the hole.
        const std::uint64_t data = m_file.NextData(position);
        position = std::max(position, data - std::min<std::uint64_t>(data, SectionHeader::kSize));
        if (position >= to) {
            break;
        }
        const std::uint64_t end = std::clamp(m_file.NextHole(data), position + 1, to);
        const std::uint64_t places = std::min(kSearchBlock, end - position);
        const std::size_t count = m_file.ReadAt(position, m_buffer.data(), places + kOverlap);
        const std::string_view bytes(m_buffer.data(), count);
        for (std::uint64_t i = 0; i < places && i < count; ++i) {
            if (MayBeHeader(bytes.substr(i)) && isHeader(position + i)) {
                return position + i;
            }
        }
        position += places;
    }
    return to;
}

}  // namespace stmdcm
