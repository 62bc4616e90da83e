#include "trace/usecase/BlockReader.h"

#include <algorithm>
#include <cstring>

#include "source_utilities/uString.h"

namespace Zu::Wep::Trace {
namespace {

/// `std::getline`, but for memory that runs out: that would make the stream bad, which looks like the end of the text.
/// Here it reaches the caller.
bool GetLine(std::istream& in, std::string& line) {
    const std::istream::sentry ready(in, true);
    if (!ready) {
        return false;
    }
    line.clear();
    constexpr int end = std::istream::traits_type::eof();
    std::streambuf& buffer = *in.rdbuf();
    int next = buffer.sbumpc();
    const bool isAtEnd = next == end;
    for (; next != end && next != '\n'; next = buffer.sbumpc()) {
        line += static_cast<char>(next);
    }
    if (next == end) {
        in.setstate(isAtEnd ? std::ios_base::eofbit | std::ios_base::failbit : std::ios_base::eofbit);
    }
    return !isAtEnd;
}

}  // namespace

bool ReadBlockLine(std::string& line, std::istringstream& in) {
    if (!GetLine(in, line)) {
        return false;
    }
    ZU_WEP::uString::StripTrailing(line, TrailingBlanks);
    const bool blank = line.empty();
    line.resize(std::min(line.find('\0'), line.size()));
    return !blank;
}

bool myfgets(char* dst, int size, std::istringstream& in) {
    std::string line;
    const bool more = ReadBlockLine(line, in);
    if (in.fail()) {
        return false;
    }
    const std::size_t length = std::min(line.size(), static_cast<std::size_t>(std::max(size, 0)));
    std::memcpy(dst, line.data(), length);
    dst[length] = '\0';
    return more;
}

int SearchForNextBlock(const char* line, std::istringstream& in) {
    if (line == BlockOpen) {
        return 0;
    }
    std::string current;
    while (ReadBlockLine(current, in)) {
        if (current.starts_with(BlockOpen)) {
            return 0;
        }
    }
    return 1;
}

int SplitKeyLine(const char* line, KeyLine& out) {
    const std::string_view text = line;
    if (text.size() > MaxBlockLine) {
        return -1;
    }
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) {
        return 1;
    }
    out = {text.substr(0, equals), line + equals + 1};
    return 0;
}

}  // namespace Zu::Wep::Trace
