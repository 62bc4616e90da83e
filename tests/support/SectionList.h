#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "trace/format/SectionScanner.h"

namespace stmdcm {

/// Bytes in memory as a file.
class MemorySource final : public Zu::Wep::Trace::SectionSource {
  public:
    explicit MemorySource(const std::string& bytes) : m_bytes(bytes) {}
    std::optional<std::size_t> ReadAt(std::uint64_t offset, char* buffer, std::size_t size) override {
        const std::size_t begin = std::min<std::size_t>(offset, m_bytes.size());
        const std::size_t count = std::min(size, m_bytes.size() - begin);
        std::memcpy(buffer, m_bytes.data() + begin, count);
        return count;
    }

  private:
    const std::string& m_bytes;
};

/// What a search passes.
inline std::vector<Zu::Wep::Trace::SectionInfo> SectionList(const std::string& capture) {
    MemorySource source(capture);
    Zu::Wep::Trace::SectionScanner scanner(source);
    std::vector<Zu::Wep::Trace::SectionInfo> list;
    for (Zu::Wep::Trace::SectionInfo info; scanner.Next(info);) {
        list.push_back(info);
    }
    return list;
}

/// A section as it stands in a file, with `lie` added to its length.
inline std::string MakeSection(const std::string& name, std::uint32_t version, const std::string& payload,
                               std::int64_t lie = 0) {
    const auto length = static_cast<std::int64_t>(Zu::Wep::Trace::SectionHeader::kSize + name.size() + payload.size());
    return Zu::Wep::Trace::EncodeSectionStart(static_cast<std::uint32_t>(length + lie), name, version) + payload;
}

/// A capture whose section at that place states another end.
inline std::string Stating(std::string capture, const Zu::Wep::Trace::SectionInfo& section, std::uint64_t end) {
    return capture.replace(section.offset, Zu::Wep::Trace::SectionHeader::kLengthSize,
                           Zu::Wep::Trace::EncodeSectionLength(static_cast<std::uint32_t>(end - section.offset)));
}

}  // namespace stmdcm
