#pragma once

#include <cstdint>
#include <functional>

#include "stmdcm/recover/HeaderRules.h"
#include "stmdcm/recover/HeaderSearch.h"

namespace stmdcm {

/// Looks for sections within a section. A length that is too great can lead to the end of a later section, or into the
/// midst of one, as if nothing was wrong; a payload may also hold what looks like sections by intent.
class InnerSections {
  public:
    using OnFound = std::function<void(const Section& inner)>;
    using OnProgress = std::function<void(std::uint64_t offset)>;

    /// Borrows all.
    InnerSections(const CaptureFile& file, const HeaderRules& rules, const OnProgress& onProgress)
        : m_file(file), m_rules(rules), m_search(file), m_onProgress(onProgress) {}

    /// Tells those in [section's header, end), those within another of them included, in the order of their offsets.
    /// Less proof is asked for where the chain of sections is broken.
    void Tell(const Section& section, std::uint64_t end, bool isChainWhole, const OnFound& onFound);
    /// Whether the payload up to `end` is a capture of its own, each section of which is whole.
    bool IsCapture(const Section& section, std::uint64_t end) const;

  private:
    const CaptureFile& m_file;
    const HeaderRules& m_rules;
    HeaderSearch m_search;
    const OnProgress& m_onProgress;
};

}  // namespace stmdcm
