#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

#include "tool/check/SettingsCheck.h"

namespace stmdcm {

/// The text that the readers of the use cases get, with the way back from a reader's position to the line.
class BlockText {
  public:
    /// The lines are borrowed.
    explicit BlockText(const std::vector<BlockLine>& lines);

    std::istringstream Stream() const { return std::istringstream(m_text); }
    const std::vector<BlockLine>& Lines() const { return m_lines; }

    /// How many lines were read from a stream of this text.
    std::size_t Consumed(const std::istringstream& in) const;

  private:
    const std::vector<BlockLine>& m_lines;
    std::string m_text;
    std::vector<std::size_t> m_ends;  ///< of each line, behind its line feed
};

}  // namespace stmdcm
