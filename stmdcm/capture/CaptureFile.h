#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "source_utilities/PosixFile.h"
#include "trace/format/SectionSource.h"

namespace stmdcm {

/// A file that is, or was, a capture, or goes with one, open for reading alone. Every failure is a Failure that names
/// the file.
class CaptureFile {
  public:
    enum class Identifier {
        Required,  ///< a file that does not begin with it is no capture
        Optional,  ///< it may be damaged
        None       ///< it need not be one, and may be empty
    };

    explicit CaptureFile(std::string path, Identifier identifier = Identifier::Required);

    /// Whether it is a regular file without a byte.
    static bool IsEmpty(const std::string& path);

    const std::string& Path() const { return m_path; }
    const ZU_WEP::PosixFile& File() const { return m_file; }
    /// When it was opened.
    std::uint64_t Size() const { return m_size; }
    bool HasIdentifier() const { return m_hasIdentifier; }

    /// How many of `length` bytes behind `offset` the file holds.
    std::uint64_t Held(std::uint64_t offset, std::uint64_t length) const;
    /// Fewer than `size` bytes only at the end of the file.
    std::size_t ReadAt(std::uint64_t offset, char* buffer, std::size_t size) const;
    /// As many of `length` bytes as the file holds.
    std::string Read(std::uint64_t offset, std::uint64_t length) const;

    /// Where the first bytes at or behind `offset` are that take room on the disk, and where the first that don't: the
    /// size for none. Those that don't are zeros.
    std::uint64_t NextData(std::uint64_t offset) const;
    std::uint64_t NextHole(std::uint64_t offset) const;

  private:
    std::uint64_t Seek(std::uint64_t offset, int whence, std::uint64_t otherwise) const;

    std::string m_path;
    std::uint64_t m_size = 0;
    ZU_WEP::PosixFile m_file;
    bool m_hasIdentifier = false;
};

/// The capture as a walk reads it; borrowed. A byte that can't be read is no end of the sections: it throws Failure.
class CaptureSource final : public Zu::Wep::Trace::SectionSource {
  public:
    explicit CaptureSource(const CaptureFile& file) : m_file(file) {}
    std::optional<std::size_t> ReadAt(std::uint64_t offset, char* buffer, std::size_t size) override {
        return m_file.ReadAt(offset, buffer, size);
    }
    std::uint64_t NextData(std::uint64_t offset) override { return m_file.File().NextData(offset); }

  private:
    const CaptureFile& m_file;
};

}  // namespace stmdcm
