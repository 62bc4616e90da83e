#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "stmdcm/reading/FindingKind.h"

namespace stmdcm {

/// Where in a file a finding stands.
struct Place {
    std::string section;                  ///< empty: the file itself
    std::optional<std::uint64_t> offset;  ///< of the section's header, or of the byte in question
    std::size_t line = 0;                 ///< within the text; 0: none

    Place AtLine(std::size_t number) const { return {section, offset, number}; }
};

/// "STMDECODERINFO at 20213, line 3", as much of it as there is.
std::string InWords(const Place& place);

struct Finding {
    const FindingKind* kind;
    Place place;
    std::string what;    ///< what is wrong
    std::string effect;  ///< what the reader does about it
};

/// What was found in one file. Keeps the first of each kind and counts the rest.
class Findings {
  public:
    static constexpr std::size_t kMaxOfKind = 20;

    void Add(const FindingKind& kind, Place place, std::string what, std::string effect);
    void Add(Finding finding);
    void Add(const Findings& others);

    /// Those that were kept, in the order of their places.
    const std::vector<Finding>& Sorted() const& { return m_kept; }
    std::vector<Finding> Sorted() && { return std::move(m_kept); }
    /// All of a kind, or of a severity.
    std::size_t Count(const FindingKind& kind) const;
    std::size_t Count(Severity severity) const;

  private:
    std::vector<Finding> m_kept;  ///< sorted
    std::array<std::size_t, std::size(kFindingKinds)> m_counts{};
};

/// A piece of a file between quotes: shortened, and safe for a terminal.
std::string Quoted(std::string_view text);

/// "1 line", "2 lines".
std::string Counted(std::size_t count, std::string_view noun);

}  // namespace stmdcm
