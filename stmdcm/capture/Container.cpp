#include "stmdcm/capture/Container.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "stmdcm/Failure.h"
#include "trace/format/RetiredSection.h"

namespace stmdcm {

using Zu::Wep::Trace::IsRetired;
using Zu::Wep::Trace::kFirstSectionOffset;
using Zu::Wep::Trace::kMaxNameLength;
using Zu::Wep::Trace::LiveVersion;
using Zu::Wep::Trace::SectionHeader;
using Zu::Wep::Trace::SectionInfo;
using Zu::Wep::Trace::SectionScanner;

namespace {

std::uint64_t Hash(std::string_view name, std::uint32_t version) {
    return std::hash<std::string_view>{}(ComparedName(name)) ^ (version * 0x9E3779B97F4A7C15U);
}

}  // namespace

const char* SectionUseText(SectionUse use) {
    constexpr const char* kTexts[] = {"read", "shadowed", "retired", "unreachable"};
    return kTexts[static_cast<std::size_t>(use)];
}

bool IsPlausibleName(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c <= '~'; });
}

std::string_view ComparedName(std::string_view name) { return name.substr(0, name.find('\0')); }

std::uint64_t Section::PayloadOffset() const { return offset + SectionHeader::kSize + nameLength; }

std::uint32_t Section::PayloadLength() const {
    return length - static_cast<std::uint32_t>(SectionHeader::kSize) - nameLength;
}

bool Section::IsTooShort() const { return length < SectionHeader::kSize || length - SectionHeader::kSize < nameLength; }

Container::Container(std::string path) : Container(CaptureFile(std::move(path))) {}

Container::Container(CaptureFile file) : m_file(std::move(file)) { Walk(); }

void Container::Walk() {
    CaptureSource source(m_file);
    SectionScanner scanner(source, kFirstSectionOffset, SectionScanner::Reach::PastLimits);
    std::vector<Key> keys;
    SectionInfo info;
    while (scanner.Next(info)) {
        if (m_sections.size() == kMaxSections) {
            m_hasMore = true;
            break;
        }
        Section section{info.offset, info.length, info.version,
                        static_cast<std::uint32_t>(info.payloadOffset - info.offset - SectionHeader::kSize)};
        if (info.reachable && IsRetired(info.version)) {
            section.use = SectionUse::Retired;
        } else if (info.reachable) {
            section.use = SectionUse::Read;
            keys.push_back({Hash(info.name, info.version), m_sections.size()});
        }
        m_sections.push_back(section);
    }
    m_stop = scanner.Stop();
    m_stopOffset = scanner.StopOffset();
    MarkShadowed(std::move(keys));
}

void Container::MarkShadowed(std::vector<Key> keys) {
    std::sort(keys.begin(), keys.end());
    const Key* const last = keys.data() + keys.size();
    for (const Key* begin = keys.data(); begin != last;) {
        const Key* end = std::find_if(begin, last, [&](const Key& key) { return key.hash != begin->hash; });
        if (end - begin > 1) {
            MarkGroup(begin, end);
        }
        begin = end;
    }
}

/// Equal hashes are nearly always equal names, so `found` holds one entry.
void Container::MarkGroup(const Key* begin, const Key* end) {
    std::vector<std::pair<std::string, std::uint32_t>> found;
    for (const Key* key = begin; key != end; ++key) {
        Section& section = m_sections[key->index];
        const std::string name = Name(section);
        std::pair entry(std::string(ComparedName(name)), section.version);
        if (std::find(found.begin(), found.end(), entry) != found.end()) {
            section.use = SectionUse::Shadowed;
        } else {
            found.push_back(std::move(entry));
        }
    }
}

std::string Container::Name(const Section& section) const {
    return m_file.Read(section.offset + SectionHeader::kSize, std::min(section.nameLength, kMaxNameLength));
}

bool Container::HasName(const Section& section, std::string_view name) const {
    return section.nameLength >= ComparedName(name).size() && ComparedName(Name(section)) == ComparedName(name);
}

bool Container::IsOrWas(const Section& section, std::string_view name, std::uint32_t version) const {
    return !section.IsTooShort() && LiveVersion(section.version) == version && HasName(section, name);
}

const Section* Container::Find(std::string_view name, std::uint32_t version) const {
    const auto isWanted = [&](const Section& section) {
        return section.use == SectionUse::Read && section.version == version && HasName(section, name);
    };
    const auto found = std::find_if(m_sections.begin(), m_sections.end(), isWanted);
    return found == m_sections.end() ? nullptr : &*found;
}

const Section* Container::At(std::uint64_t offset) const {
    const auto found = std::lower_bound(m_sections.begin(), m_sections.end(), offset,
                                        [](const Section& section, std::uint64_t at) { return section.offset < at; });
    return found != m_sections.end() && found->offset == offset ? &*found : nullptr;
}

void Container::RequireWhole() const {
    if (!IsWhole() || HasMore() ||
        std::any_of(m_sections.begin(), m_sections.end(), std::mem_fn(&Section::IsTooShort))) {
        throw Failure(Path(), "the row of sections is broken, nothing was copied; run stmdcm recover first")
            .At(m_stopOffset);
    }
}

std::uint64_t Container::TrailingOffset() const {
    if (m_sections.empty()) {
        return std::min(kFirstSectionOffset, Size());
    }
    const Section& last = m_sections.back();
    return std::min(Size(), last.length == 0 ? last.PayloadOffset() : last.End());
}

std::uint64_t Container::HeldPayload(const Section& section) const {
    return m_file.Held(section.PayloadOffset(), section.PayloadLength());
}

std::string Container::ReadPayload(const Section& section) const {
    return m_file.Read(section.PayloadOffset(), HeldPayload(section));
}

}  // namespace stmdcm
