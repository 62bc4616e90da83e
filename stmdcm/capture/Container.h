#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "stmdcm/capture/CaptureFile.h"
#include "trace/format/SectionScanner.h"

namespace stmdcm {

/// What a search for a section's name and version makes of it.
enum class SectionUse : std::uint8_t {
    Read,        ///< it is the one that is found
    Shadowed,    ///< an older one of that name and version is found
    Retired,     ///< taken out of use by an edit (trace/format/RetiredSection.h)
    Unreachable  ///< the search ends before it
};

/// "read", "shadowed", "retired", "unreachable".
const char* SectionUseText(SectionUse use);

/// One that a writer would give: ASCII, no control characters and no blanks at all.
bool IsPlausibleName(std::string_view name);
/// As much of a name as a search compares.
std::string_view ComparedName(std::string_view name);

/// A section without its name, which Container::Name gives.
struct Section {
    std::uint64_t offset = 0;      ///< of the header's first byte
    std::uint32_t length = 0;      ///< as stated: it may be below its header or reach past the end of the file
    std::uint32_t version = 0;     ///< as stored, with the top byte of trace/format/RetiredSection.h
    std::uint32_t nameLength = 0;  ///< as stated
    SectionUse use = SectionUse::Unreachable;

    std::uint64_t End() const { return offset + length; }
    std::uint64_t PayloadOffset() const;
    /// As a reader takes it: has wrapped around where IsTooShort.
    std::uint32_t PayloadLength() const;
    /// The length does not even cover header and name.
    bool IsTooShort() const;
    /// It states to hold no payload.
    bool IsEmpty() const { return PayloadLength() == 0; }
};

/// The sections of a capture (docs/tdf.md). Takes 24 bytes for each and reads no payload.
class Container {
  public:
    /// What is behind so many sections is not listed.
    static constexpr std::size_t kMaxSections = 1'000'000;

    /// Opens the capture and walks it; throws Failure.
    explicit Container(std::string path);
    /// Walks a capture that is open.
    explicit Container(CaptureFile file);

    const CaptureFile& File() const { return m_file; }
    const std::string& Path() const { return m_file.Path(); }
    std::uint64_t Size() const { return m_file.Size(); }

    /// In the order of the walk, those behind a section over the limits of a search included.
    const std::vector<Section>& Sections() const { return m_sections; }
    bool HasMore() const { return m_hasMore; }

    /// Every byte of the name, but no more than a search reads, and nothing of what is no longer in the file.
    std::string Name(const Section& section) const;

    /// Whether it has that name for a search.
    bool HasName(const Section& section, std::string_view name) const;

    /// Whether it is, or was before a change retired it, one of that name and version. A header that is too short to
    /// hold its name is none.
    bool IsOrWas(const Section& section, std::string_view name, std::uint32_t version) const;

    /// Throws Failure, with the place, unless a search passes every byte of the file and each header holds its name:
    /// what a copy of it in new pieces needs.
    void RequireWhole() const;

    /// The section that a reader gets; nullptr for none.
    const Section* Find(std::string_view name, std::uint32_t version) const;

    /// The listed section that begins there; nullptr for none.
    const Section* At(std::uint64_t offset) const;

    /// Why and where a search ends.
    Zu::Wep::Trace::ScanStop Stop() const { return m_stop; }
    std::uint64_t StopOffset() const { return m_stopOffset; }
    /// Whether a search passes every byte of the file, and no section reaches past it.
    bool IsWhole() const { return m_stop == Zu::Wep::Trace::ScanStop::EndOfFile && m_stopOffset == Size(); }

    /// The bytes at the end of the file that no listed section covers: where they begin, and how many they are.
    std::uint64_t TrailingOffset() const;
    std::uint64_t TrailingLength() const { return m_file.Held(TrailingOffset(), Size()); }

    /// The payload's length as far as the file holds it: what a reader gets.
    std::uint64_t HeldPayload(const Section& section) const;
    /// The file ends before the section does.
    bool IsTorn(const Section& section) const { return section.End() > Size(); }
    /// As much of the payload as the file holds.
    std::string ReadPayload(const Section& section) const;

  private:
    /// What tells a section from others: a hash of name and version, and its place in the list.
    struct Key {
        std::uint64_t hash;
        std::size_t index;
        bool operator<(const Key& other) const { return std::tie(hash, index) < std::tie(other.hash, other.index); }
    };

    void Walk();
    void MarkShadowed(std::vector<Key> keys);
    void MarkGroup(const Key* begin, const Key* end);

    CaptureFile m_file;
    std::vector<Section> m_sections;
    bool m_hasMore = false;
    Zu::Wep::Trace::ScanStop m_stop = Zu::Wep::Trace::ScanStop::None;
    std::uint64_t m_stopOffset = 0;
};

}  // namespace stmdcm
