#pragma once

// The rules by which sections are found, see docs/tdf.md.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "trace/format/SectionLayout.h"
#include "trace/format/SectionWindow.h"

namespace Zu::Wep::Trace {

struct SectionInfo {
    std::uint64_t offset = 0;  ///< of the header's first byte
    std::uint32_t length = 0;  ///< as stated: it may be below its header or reach past the end of the file
    std::uint32_t version = 0;
    std::string name;  ///< every byte of it; a search compares up to the first zero byte
    std::uint64_t payloadOffset = 0;
    std::uint32_t payloadLength = 0;  ///< as stated; has wrapped around where `length` is below the header
    bool reachable = true;            ///< whether a search comes here

    /// Whether a search for `key` finds it, if it finds none before.
    bool Has(const SectionKey& key) const;
};

/// Why a walk ended.
enum class ScanStop {
    None,             ///< it has not
    EndOfFile,        ///< at, or past, the end of the file
    TornHeader,       ///< the file ends within a header or a name
    LengthOverLimit,  ///< a section longer than kMaxSectionLength
    NameOverLimit,    ///< a name longer than kMaxNameLength
    NoProgress,       ///< a section of length 0
    Wrap,             ///< a section that ends past kMaxFileSize
    ReadError
};

/// Walks the chain of sections, each one visited at most once.
class SectionScanner {
  public:
    enum class Reach {
        AsSearch,   ///< ends where a search ends
        PastLimits  ///< passes sections and names over the limits, which are then, as all behind them, not `reachable`
    };

    /// Borrows the source. `offset` is that of the first section.
    explicit SectionScanner(SectionSource& source, std::uint64_t offset = kFirstSectionOffset,
                            Reach reach = Reach::AsSearch)
        : m_window(source), m_reach(reach), m_offset(offset) {}

    /// Gives the next section; false at the end of the walk, with `info` unspecified.
    bool Next(SectionInfo& info);

    /// Goes on to the next section that a search for one of the keys finds, if it finds none before; false when there
    /// is none.
    bool Find(std::span<const SectionKey> wanted, SectionInfo& info);

    /// Why and where a search ends: `None` until the walk has met that place. The offset is that of the section that
    /// can't be read or passed; for `EndOfFile` it is the stated end of the last section.
    ScanStop Stop() const { return m_stop; }
    std::uint64_t StopOffset() const { return m_stopOffset; }

  private:
    bool ReadHeader();
    void Describe(SectionInfo& info) const;
    void GoOn();
    void NoteStop(ScanStop stop);
    bool PassLimit(ScanStop stop);
    bool End(ScanStop stop);

    SectionWindow m_window;
    Reach m_reach;
    std::uint64_t m_offset;  ///< of the section that is read next
    SectionHeader m_header;  ///< of that section, once it is read
    std::string_view m_name;
    bool m_ended = false;
    ScanStop m_stop = ScanStop::None;
    std::uint64_t m_stopOffset = 0;
};

/// The stop in words, for people.
const char* ScanStopText(ScanStop stop);

}  // namespace Zu::Wep::Trace
