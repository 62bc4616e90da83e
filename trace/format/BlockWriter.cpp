#include "trace/format/BlockWriter.h"

#include <algorithm>

#include "trace/format/BlockReader.h"

namespace Zu::Wep::Trace {
namespace {

/// As much of the value as its line has room for. A reader strips trailing blanks, so what is cut ends in none: the
/// text reads back as it is written.
std::string_view CutToLine(std::string_view value, std::string_view key, BlockWriteReporter& reporter) {
    const std::size_t room = kMaxWrittenLine - key.size() - std::string_view("=\n").size();
    if (value.size() > room) {
        value = StripBlanks(value.substr(0, room));
        reporter.OnValueCut(key, value.size());
    }
    return value;
}

}  // namespace

void AppendBlockLine(std::string& out, std::string_view line) {
    out += line;
    out += '\n';
}

void AppendKeyLine(std::string& out, std::string_view key, std::string_view value, BlockWriteReporter& reporter) {
    value = CutToLine(value.substr(0, value.find('\0')), key, reporter);
    out += key;
    out += '=';
    const std::size_t start = out.size();
    AppendBlockLine(out, value);
    // A line feed in a value would let a name open or close a block. A CR ends no line and reads back as it is.
    if (value.find('\n') != std::string_view::npos) {
        std::replace(out.begin() + static_cast<std::ptrdiff_t>(start), out.end() - 1, '\n', ' ');
        reporter.OnLineFeed(key);
    }
}

void AppendKeyLine(std::string& out, std::string_view key, std::int32_t number, BlockWriteReporter& reporter) {
    AppendKeyLine(out, key, std::to_string(number), reporter);
}

}  // namespace Zu::Wep::Trace
