#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace stmdcm {

enum class RemarkKind {
    Identifier,       ///< the file does not begin as a capture does
    Dropped,          ///< bytes that are not in the result
    CutShort,         ///< a section that the end of the file cut off
    LengthCorrected,  ///< a section whose length can't be true
    Split,            ///< a section that was asked to end where another begins
    OddName,          ///< a section whose name no writer would give
    HiddenSection,    ///< a section within another, which seems to have swallowed it
    InnerCapture,     ///< a capture that a section holds: no doubt
    OverLimit,        ///< a section over the limits of a search
    Unreachable,      ///< sections that no search reaches in the result
    Missing,          ///< a section without which no configuration can be loaded
    Empty,            ///< such a section, of text, that is there and empty
    Finding,          ///< any other error that `check` finds in the result
    NotLoadable,      ///< the plug-in can't load the result
    Mismatch,         ///< the result is not what was written
    NotKept           ///< owner, mode or the like of a file that the result takes the place of
};

/// For programs: "dropped", "cut_short" ...
const char* RemarkId(RemarkKind kind);

/// Something that was lost, is doubtful or is worth knowing. Offsets and lengths are those of the damaged file.
struct Remark {
    RemarkKind kind;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;  ///< 0 when it is about no bytes in particular
    std::string section;       ///< empty when it is about none
    std::string sentence;
    std::string finding = {};  ///< its identifier (docs/check.md), for what `check` finds in the result; else empty
};

class Remarks {
  public:
    /// Those behind are only counted.
    static constexpr std::size_t kMaxListed = 100'000;

    void Add(Remark remark);
    /// One about the whole file.
    void Add(RemarkKind kind, std::string sentence) { Add({kind, 0, 0, {}, std::move(sentence)}); }
    const std::vector<Remark>& Listed() const { return m_listed; }
    std::size_t Count() const { return m_count; }
    /// Without those that are no doubt.
    std::size_t DoubtCount() const { return m_doubtCount; }

  private:
    std::vector<Remark> m_listed;
    std::size_t m_count = 0;
    std::size_t m_doubtCount = 0;
};

}  // namespace stmdcm
