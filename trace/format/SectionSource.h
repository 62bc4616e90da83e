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
    /// Whether more may be read than is asked for: a failure to must leave no trace.
    virtual bool ReadsAhead() const { return true; }
    /// Where the first byte at or behind `offset` can be that is not zero: the source may know without reading.
    virtual std::uint64_t NextData(std::uint64_t offset) { return offset; }
};

/// A descriptor as source; borrowed.
class FileSectionSource final : public SectionSource {
  public:
    explicit FileSectionSource(const ZU_WEP::PosixFile& file) : m_file(file) {}
    std::optional<std::size_t> ReadAt(std::uint64_t offset, char* buffer, std::size_t size) override {
        return m_file.ReadAt(offset, buffer, size);
    }
    std::uint64_t NextData(std::uint64_t offset) override { return m_file.NextData(offset); }

  private:
    const ZU_WEP::PosixFile& m_file;
};

/// A stream that can seek as source; borrowed.
class StreamSectionSource final : public SectionSource {
  public:
    explicit StreamSectionSource(std::FILE* stream) : m_stream(stream) {}
    std::optional<std::size_t> ReadAt(std::uint64_t offset, char* buffer, std::size_t size) override;
    bool ReadsAhead() const override { return false; }  // the stream's error would stay

  private:
    std::FILE* m_stream;
};

}  // namespace Zu::Wep::Trace
