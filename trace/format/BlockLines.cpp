#include "trace/format/BlockLines.h"

#include <algorithm>

#include "trace/format/BlockReader.h"

namespace Zu::Wep::Trace {

const BlockText BlockLines::kStreamText;

BlockLines::BlockLines(UsecaseKind kind, std::istringstream& in) : m_kind(kind), m_text(&kStreamText), m_in(&in) {
    m_isEnded = !in.good();
    const auto position = m_isEnded ? std::streamoff{-1}
                                    : std::streamoff{in.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in)};
    if (position >= 0) {
        m_rest = in.view();
        m_rest.remove_prefix(std::min(static_cast<std::size_t>(position), m_rest.size()));
    }
    m_moved = m_rest.size();
}

bool BlockLines::Next(std::string_view& line) {
    line = {};
    m_isAtEnd = m_rest.empty();
    if (m_isAtEnd) {
        EndStream(m_isEnded ? std::ios_base::failbit : std::ios_base::eofbit | std::ios_base::failbit);
        return false;
    }
    const std::size_t end = std::min(m_rest.find('\n'), m_rest.size());
    line = StripBlanks(m_rest.substr(0, end));
    ++m_count;
    const bool isBlank = line.empty();
    if (end > m_free) {
        FindZero(end);
    }
    if (end > m_free) {
        line = line.substr(0, line.find('\0'));
    }
    if (end == m_rest.size()) {
        m_rest = {};
        EndStream(std::ios_base::eofbit);
    } else {
        m_rest.remove_prefix(end + 1);
        m_free -= std::min(m_free, end + 1);
    }
    return !isBlank;
}

/// Zero bytes are looked for in pieces, which takes a fraction of the time that a look into each line does.
void BlockLines::FindZero(std::size_t end) {
    constexpr std::size_t kAhead = 4096;
    m_free = std::min(m_rest.substr(0, end + kAhead).find('\0'), std::min(end + kAhead, m_rest.size()));
}

/// The stream moves before its state changes: that may throw, if the host has asked for it.
void BlockLines::EndStream(std::ios_base::iostate state) {
    m_isEnded = true;
    if (m_in != nullptr) {
        MoveStream();
        m_in->setstate(state);
    }
}

void BlockLines::MoveStream() {
    if (m_in != nullptr && m_moved != m_rest.size()) {
        const auto taken = static_cast<std::streamoff>(m_moved - m_rest.size());
        m_in->rdbuf()->pubseekoff(taken, std::ios_base::cur, std::ios_base::in);
        m_moved = m_rest.size();
    }
}

}  // namespace Zu::Wep::Trace
