#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "stmdcm/capture/CaptureFile.h"
#include "stmdcm/capture/Container.h"

namespace stmdcm {

/// The sections that make up a configuration, each of version 1.
inline constexpr std::uint32_t kWantedVersion = 1;
bool IsWantedName(std::string_view name);
/// Whether the section holds lines of text: one that was cut off within a line would be read wrongly.
bool IsTextSection(std::string_view name);

/// What is found without a chain that leads there has a shorter name than the format allows: long ones are met by
/// chance in data.
inline constexpr std::uint32_t kMaxFoundName = 255;

/// Tells from the bytes of a damaged capture what may be a section's header.
class HeaderRules {
  public:
    /// Borrows the file.
    explicit HeaderRules(const CaptureFile& file) : m_file(file) {}

    /// The header there, whatever it says, unless the file ends within it or its name is over the limit of a search.
    std::optional<Section> HeaderAt(std::uint64_t offset) const;
    /// As much of the name as the file holds and a search reads.
    std::string NameOf(const Section& section) const;

    /// The length covers header and name, and the file holds all of it.
    bool IsWhole(const Section& section) const;
    /// It has a plausible name and a length that is within the limits; the file may end within it.
    bool IsPlausible(const Section& section) const;
    /// It has the name and version of a section that makes up a configuration, whatever its length says.
    bool IsWanted(const Section& section) const;

    /// The section that somebody says begins there: the file holds all of it, or its name is plausible.
    std::optional<Section> SectionAt(std::uint64_t offset) const;

    /// Whether a section that ends there is followed by what may follow one.
    bool MayEndAt(std::uint64_t offset) const { return MayEndAt(offset, kLookAhead); }
    /// Whether whole sections, back to back and no more than `most`, lead from there to `end` exactly.
    bool LeadsTo(std::uint64_t offset, std::uint64_t end, std::uint64_t most = UINT64_MAX) const;
    /// Whether something that no chain led to is a header: it is wanted, or leads on to another one or to the end.
    bool IsFound(std::uint64_t offset) const;
    /// Whether something in a section that ends at `end` is a header, too: found, or leading to that end by
    /// no more than kMostFollowed others.
    bool IsInner(std::uint64_t offset, std::uint64_t end) const;
    /// The same with less proof, where there is damage nearby: whole with a plausible name of two bytes and more, as
    /// numbers of 32 bits can't look like, or wanted.
    bool MayBeInner(std::uint64_t offset) const;

  private:
    static constexpr int kLookAhead = 3;
    static constexpr std::uint64_t kMostFollowed = 256;  ///< or each of many sections would be followed to their end

    bool MayEndAt(std::uint64_t offset, int lookAhead) const;
    bool IsWholeAndNamed(const Section& section) const;
    const CaptureFile& m_file;
};

}  // namespace stmdcm
