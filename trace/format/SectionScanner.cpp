#include "trace/format/SectionScanner.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Zu::Wep::Trace {

namespace {

/// Read at once for each section: the header with all but the longest names.
constexpr std::size_t kBlockSize = 64;

}  // namespace

bool SectionInfo::Has(const SectionKey& key) const {
    return reachable && version == key.version && std::string_view(name.c_str()) == key.name;
}

bool SectionScanner::Next(SectionInfo& info) {
    if (m_ended || !ReadSectionAtOffset(info)) {
        return false;
    }
    const std::uint64_t next = m_offset + info.length;
    // The section itself may be the one that is searched for, so the walk ends behind it.
    if (next == m_offset) {
        End(ScanStop::NoProgress);
    } else if (next > kMaxFileSize) {
        End(ScanStop::Wrap);
    }
    m_offset = next;
    return true;
}

bool SectionScanner::Find(const char* name, std::uint32_t version, SectionInfo& info) {
    const SectionKey wanted{name != nullptr ? name : "", version};
    while (Next(info)) {
        if (info.Has(wanted)) {
            return true;
        }
    }
    return false;
}

bool SectionScanner::ReadSectionAtOffset(SectionInfo& info) {
    std::array<char, kBlockSize> block;
    const auto count = m_source.ReadAt(m_offset, block.data(), block.size());
    if (!count || *count < SectionHeader::kSize) {
        return End(!count ? ScanStop::ReadError : *count == 0 ? ScanStop::EndOfFile : ScanStop::TornHeader);
    }
    const SectionHeader header = DecodeSectionHeader(block.data());
    if ((header.length > kMaxSectionLength && !PassLimit(ScanStop::LengthOverLimit)) ||
        (header.nameLength > kMaxNameLength && !PassLimit(ScanStop::NameOverLimit))) {
        return false;
    }
    info.name.resize(std::min(header.nameLength, kMaxNameLength));
    const std::size_t known = std::min(info.name.size(), *count - SectionHeader::kSize);
    info.name.replace(0, known, block.data() + SectionHeader::kSize, known);
    if (!ReadNameBehind(known, info.name)) {
        return false;
    }
    info.offset = m_offset;
    info.length = header.length;
    info.version = header.version;
    info.payloadOffset = m_offset + SectionHeader::kSize + header.nameLength;
    // Wraps around for a length below the header: a reader takes the rest of the file then (docs/tdf.md).
    info.payloadLength = header.length - static_cast<std::uint32_t>(SectionHeader::kSize) - header.nameLength;
    info.reachable = m_stop == ScanStop::None;
    return true;
}

bool SectionScanner::ReadNameBehind(std::size_t known, std::string& name) {
    if (known == name.size()) {
        return true;
    }
    const std::size_t rest = name.size() - known;
    const auto count = m_source.ReadAt(m_offset + SectionHeader::kSize + known, name.data() + known, rest);
    return (count && *count == rest) || End(count ? ScanStop::TornHeader : ScanStop::ReadError);
}

void SectionScanner::NoteStop(ScanStop stop) {
    if (m_stop == ScanStop::None) {
        m_stop = stop;
        m_stopOffset = m_offset;
    }
}

bool SectionScanner::PassLimit(ScanStop stop) {
    NoteStop(stop);
    m_ended = m_reach == Reach::AsSearch;
    return !m_ended;
}

bool SectionScanner::End(ScanStop stop) {
    NoteStop(stop);
    m_ended = true;
    return false;
}

const char* ScanStopText(ScanStop stop) {
    constexpr const char* kTexts[] = {"not ended",
                                      "end of file",
                                      "header or name cut off by the end of the file",
                                      "section length over 128 MiB",
                                      "name length over 4095",
                                      "section length 0",
                                      "section end past 4 GiB",
                                      "read error"};
    return kTexts[static_cast<std::size_t>(stop)];
}

}  // namespace Zu::Wep::Trace
