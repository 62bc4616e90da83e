#include "tool/check/BlockText.h"

#include <algorithm>

namespace stmdcm {

BlockText::BlockText(const std::vector<BlockLine>& lines) : m_lines(lines) {
    for (const BlockLine& line : lines) {
        m_text.append(line.text) += '\n';
        m_ends.push_back(m_text.size());
    }
}

std::size_t BlockText::Consumed(const std::istringstream& in) const {
    // Asked of the buffer, because a stream that has met its end does not tell.
    const auto position = static_cast<std::size_t>(in.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in));
    return static_cast<std::size_t>(std::upper_bound(m_ends.begin(), m_ends.end(), position) - m_ends.begin());
}

}  // namespace stmdcm
