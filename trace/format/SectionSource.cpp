#include "trace/format/SectionSource.h"

namespace Zu::Wep::Trace {

std::optional<std::size_t> StreamSectionSource::ReadAt(std::uint64_t offset, char* buffer, std::size_t size) {
    if (std::ferror(m_stream) != 0 || ::fseeko(m_stream, static_cast<off_t>(offset), SEEK_SET) != 0) {
        return std::nullopt;
    }
    const std::size_t count = std::fread(buffer, 1, size, m_stream);
    return std::ferror(m_stream) != 0 ? std::nullopt : std::optional(count);
}

}  // namespace Zu::Wep::Trace
