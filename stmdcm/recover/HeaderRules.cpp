#include "stmdcm/recover/HeaderRules.h"

#include <algorithm>

#include "trace/format/ObjectFileSection.h"
#include "trace/format/RetiredSection.h"
#include "trace/format/SectionLayout.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

static_assert(kCommonSectionVersion == kWantedVersion && kDeviceSectionVersion == kWantedVersion &&
              kStmSectionVersion == kWantedVersion);

bool IsWantedName(std::string_view name) { return name == kCommonSectionName || IsTextSection(name); }

bool IsTextSection(std::string_view name) { return name == kDeviceSectionName || name == kStmSectionName; }

std::optional<Section> HeaderRules::HeaderAt(std::uint64_t offset) const {
    char bytes[SectionHeader::kSize];
    if (m_file.Held(offset, sizeof bytes) < sizeof bytes || m_file.ReadAt(offset, bytes, sizeof bytes) < sizeof bytes) {
        return std::nullopt;
    }
    const SectionHeader header = DecodeSectionHeader(bytes);
    if (header.nameLength > kMaxNameLength) {
        return std::nullopt;
    }
    return Section{offset, header.length, header.version, header.nameLength};
}

std::string HeaderRules::NameOf(const Section& section) const {
    return m_file.Read(section.offset + SectionHeader::kSize, std::min(section.nameLength, kMaxNameLength));
}

bool HeaderRules::IsWhole(const Section& section) const {
    return !section.IsTooShort() && section.End() <= m_file.Size();
}

bool HeaderRules::IsPlausible(const Section& section) const {
    return !section.IsTooShort() && section.length <= kMaxSectionLength && section.nameLength > 0 &&
           IsPlausibleName(NameOf(section));
}

bool HeaderRules::IsWanted(const Section& section) const {
    return LiveVersion(section.version) == kWantedVersion && IsWantedName(NameOf(section));
}

std::optional<Section> HeaderRules::SectionAt(std::uint64_t offset) const {
    if (m_file.HasIdentifier() && offset < kFirstSectionOffset) {
        return std::nullopt;
    }
    const auto section = HeaderAt(offset);
    return section && (IsWhole(*section) || IsPlausibleName(NameOf(*section))) ? section : std::nullopt;
}

bool HeaderRules::MayEndAt(std::uint64_t offset, int lookAhead) const {
    const std::uint64_t rest = m_file.Held(offset, m_file.Size());
    if (rest < SectionHeader::kSize) {
        return true;
    }
    const auto next = HeaderAt(offset);
    return next && (IsPlausible(*next) || IsWanted(*next) ||
                    (lookAhead > 0 && IsWhole(*next) && MayEndAt(next->End(), lookAhead - 1)));
}

bool HeaderRules::LeadsTo(std::uint64_t offset, std::uint64_t end, std::uint64_t most) const {
    for (; offset < end && most > 0; --most) {
        const auto section = HeaderAt(offset);
        if (!section || !IsWhole(*section)) {
            return false;
        }
        offset = section->End();
    }
    return offset == end;
}

bool HeaderRules::IsWholeAndNamed(const Section& section) const {
    return section.nameLength <= kMaxFoundName && IsWhole(section) && IsPlausible(section);
}

bool HeaderRules::IsFound(std::uint64_t offset) const {
    const auto section = HeaderAt(offset);
    if (!section || section->nameLength == 0) {
        return false;
    }
    if (IsWanted(*section)) {
        return true;
    }
    if (!IsWholeAndNamed(*section)) {
        return false;
    }
    const auto next = HeaderAt(section->End());
    return section->End() == m_file.Size() || (next && IsPlausible(*next));
}

bool HeaderRules::IsInner(std::uint64_t offset, std::uint64_t end) const {
    if (IsFound(offset)) {
        return true;
    }
    const auto section = HeaderAt(offset);
    return section && section->End() <= end && IsWholeAndNamed(*section) && LeadsTo(section->End(), end, kMostFollowed);
}

bool HeaderRules::MayBeInner(std::uint64_t offset) const {
    const auto section = HeaderAt(offset);
    return section && (IsWanted(*section) || (section->nameLength > 1 && IsWholeAndNamed(*section)));
}

}  // namespace stmdcm
