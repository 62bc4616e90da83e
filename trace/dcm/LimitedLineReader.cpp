#include "trace/dcm/LimitedLineReader.h"

#include <string_view>

#include "source_utilities/Log.h"
#include "trace/usecase/BlockReader.h"

namespace Zu::Wep::Trace {

namespace {

constexpr int kEnd = std::istream::traits_type::eof();

bool IsTrailingBlank(char c) { return std::string_view(TrailingBlanks).find(c) != std::string_view::npos; }

}  // namespace

int LimitedLineReader::NextCharacter() {
    try {
        const int next = m_in.rdbuf()->sbumpc();
        if (next == kEnd) {
            m_in.setstate(std::ios_base::eofbit);
        }
        return next;
    } catch (const std::ios_base::failure&) {  // how a file stream reports a failed read(2)
        m_in.setstate(std::ios_base::badbit);
        return kEnd;
    }
}

void LimitedLineReader::Next(std::string& line, std::size_t limit) {
    line.clear();
    ++m_lineNumber;
    bool cut = false;
    for (int next = NextCharacter(); next != kEnd && next != '\n'; next = NextCharacter()) {
        const char c = static_cast<char>(next);
        if (line.size() < limit) {
            line += c;
        } else if (!IsTrailingBlank(c)) {
            cut = true;
        }
    }
    if (cut) {
        m_anyCut = true;
        ZU_WEP::Log(ZU_WEP::LogError, "STM Device DCM: %s line %lu is longer than %zu characters, the rest is skipped",
                    m_source.c_str(), m_lineNumber, limit);
    }
}

}  // namespace Zu::Wep::Trace
