#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "source_utilities/PosixFile.h"

namespace Zu::Wep::Trace {

/// What a walk reads from.
class SectionSource {
  public:
    virtual ~SectionSource() = default;
    /// Gives the number of bytes read, fewer than `size` only at the end of the file; nothing on an error.
    virtual std::optional<std::size_t> ReadAt(std::uint64_t offset, char* buffer, std::size_t size) = 0;
};

/// A descriptor as source; borrowed.
class FileSectionSource final : public SectionSource {
  public:
    explicit FileSectionSource(const ZU_WEP::PosixFile& file) : m_file(file) {}
    std::optional<std::size_t> ReadAt(std::uint64_t offset, char* buffer, std::size_t size) override {
        return m_file.ReadAt(offset, buffer, size);
    }

  private:
    const ZU_WEP::PosixFile& m_file;
};

/// A stream that can seek as source; borrowed.
class StreamSectionSource final : public SectionSource {
  public:
    explicit StreamSectionSource(std::FILE* stream) : m_stream(stream) {}
    std::optional<std::size_t> ReadAt(std::uint64_t offset, char* buffer, std::size_t size) override;

  private:
    std::FILE* m_stream;
};

}  // namespace Zu::Wep::Trace
