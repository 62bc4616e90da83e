#include "trace/format/SectionScanner.h"

#include <algorithm>

namespace Zu::Wep::Trace {

namespace {

/// Read at once for each section: the header with all but the longest names.
constexpr std::size_t kBlockSize = 64;

/// A zero byte ends a name. Few names have the length and the first letter of a key, so most cost no call.
inline bool IsFoundBy(const SectionKey& key, std::uint32_t version, std::string_view name) {
    const std::size_t size = key.name.size();
    return version == key.version && name.size() >= size && (size == 0 || name[0] == key.name[0]) &&
           (name.size() == size || name[size] == '\0') && name.starts_with(key.name);
}

}  // namespace

bool SectionInfo::Has(const SectionKey& key) const { return reachable && IsFoundBy(key, version, name); }

bool SectionScanner::Next(SectionInfo& info) {
    if (m_ended || !ReadHeader()) {
        return false;
    }
    Describe(info);
    GoOn();
    return true;
}

bool SectionScanner::Find(std::span<const SectionKey> wanted, SectionInfo& info) {
    bool isFound = false;
    while (!isFound && !m_ended && ReadHeader()) {
        isFound = m_stop == ScanStop::None && std::any_of(wanted.begin(), wanted.end(), [this](const SectionKey& key) {
                      return IsFoundBy(key, m_header.version, m_name);
                  });
        if (isFound) {
            Describe(info);
        }
        GoOn();
    }
    return isFound;
}

bool SectionScanner::ReadHeader() {
    auto bytes = m_window.At(m_offset, kBlockSize);
    if (!bytes) {
        bytes = m_window.At(m_offset, SectionHeader::kSize);  // what can't be read may lie behind it
    }
    if (!bytes || bytes->size() < SectionHeader::kSize) {
        return End(!bytes ? ScanStop::ReadError : bytes->empty() ? ScanStop::EndOfFile : ScanStop::TornHeader);
    }
    m_header = DecodeSectionHeader(bytes->data());
    if ((m_header.length > kMaxSectionLength && !PassLimit(ScanStop::LengthOverLimit)) ||
        (m_header.nameLength > kMaxNameLength && !PassLimit(ScanStop::NameOverLimit))) {
        return false;
    }
    const std::size_t size = SectionHeader::kSize + std::min(m_header.nameLength, kMaxNameLength);
    if (bytes->size() < size) {
        bytes = m_window.At(m_offset, size);
        if (!bytes || bytes->size() < size) {
            return End(bytes ? ScanStop::TornHeader : ScanStop::ReadError);
        }
    }
    m_name = bytes->substr(SectionHeader::kSize, size - SectionHeader::kSize);
    return true;
}

void SectionScanner::Describe(SectionInfo& info) const {
    info.offset = m_offset;
    info.length = m_header.length;
    info.version = m_header.version;
    info.name = m_name;
    info.payloadOffset = m_offset + SectionHeader::kSize + m_header.nameLength;
    // Wraps around for a length below the header: a reader takes the rest of the file then (docs/tdf.md).
    info.payloadLength = m_header.length - static_cast<std::uint32_t>(SectionHeader::kSize) - m_header.nameLength;
    info.reachable = m_stop == ScanStop::None;
}

/// The section itself may be the one that is searched for, so the walk ends behind it.
void SectionScanner::GoOn() {
    const std::uint64_t next = m_offset + m_header.length;
    if (next == m_offset) {
        End(ScanStop::NoProgress);
    } else if (next > kMaxFileSize) {
        End(ScanStop::Wrap);
    }
    m_offset = next;
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
