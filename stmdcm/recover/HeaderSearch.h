#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "stmdcm/capture/CaptureFile.h"

namespace stmdcm {

/// Looks at every place of a part of a file where a section's header could be. Passes over holes.
class HeaderSearch {
  public:
    using IsHeader = std::function<bool(std::uint64_t offset)>;

    /// Borrows the file.
    explicit HeaderSearch(const CaptureFile& file) : m_file(file) {}

    /// The first place of those in [from, to) that `isHeader` accepts; `to` for none. It is asked where a plausible
    /// name of up to kMaxFoundName bytes would stand behind its length.
    std::uint64_t Find(std::uint64_t from, std::uint64_t to, const IsHeader& isHeader);

  private:
    const CaptureFile& m_file;
    std::string m_buffer;
};

}  // namespace stmdcm
