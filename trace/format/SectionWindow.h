#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "trace/format/SectionSource.h"

namespace Zu::Wep::Trace {

/// What a walk holds of its source: it reads ahead as long as it is asked for places that lie close together, and no
/// more than it is asked for when they don't. What fails ahead of a request does not fail it.
class SectionWindow {
  public:
    /// Borrows the source.
    explicit SectionWindow(SectionSource& source) : m_source(source) {}

    /// `size` bytes at `offset`, fewer only at the end of the source; nothing on a read error. They last until the next
    /// call. The end is looked for anew by each request that meets it.
    std::optional<std::string_view> At(std::uint64_t offset, std::size_t size) {
        const std::uint64_t before = offset - m_offset;  // wraps around in front of the window
        if (before > m_held || m_held - before < size) {
            return Move(offset, size);
        }
        m_asked = offset;
        return std::string_view(m_bytes.get() + before, size);
    }

  private:
    std::optional<std::string_view> Move(std::uint64_t offset, std::size_t size);

    SectionSource& m_source;
    std::uint64_t m_offset = 0;
    std::size_t m_held = 0;
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_room = 0;
    std::size_t m_ahead = 0;    ///< how much is read at once
    std::uint64_t m_asked = 0;  ///< the place of the last request
};

}  // namespace Zu::Wep::Trace
