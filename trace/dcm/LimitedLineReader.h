#pragma once

#include <cstddef>
#include <istream>
#include <string>

namespace Zu::Wep::Trace {

/// Reads lines of bounded length from a stream. Knows the line number, and whether any line was cut.
class LimitedLineReader {
  public:
    /// Both are borrowed; `source` names the stream in the log.
    LimitedLineReader(std::istream& in, const std::string& source) : m_in(in), m_source(source) {}

    /// Whether a read has met the end of the stream, or failed for another reason.
    bool AtEnd() const { return !m_in.good(); }

    /// Whether reading failed otherwise than by meeting the end.
    bool Failed() const { return m_in.bad(); }

    /// Whether a line had more than blanks, tabs and CR behind its limit.
    bool AnyCut() const { return m_anyCut; }

    /// Reads the next line, without its line feed and at most `limit` characters of it; empty where there is none.
    void Next(std::string& line, std::size_t limit);

  private:
    int NextCharacter();

    std::istream& m_in;
    const std::string& m_source;
    unsigned long m_lineNumber = 0;
    bool m_anyCut = false;
};

}  // namespace Zu::Wep::Trace
