#include "trace/usecase/BlockWriter.h"

#include <algorithm>

#include "source_utilities/Log.h"
#include "source_utilities/uString.h"
#include "trace/usecase/BlockReader.h"

namespace Zu::Wep::Trace {
namespace {

void CutToLine(std::string& value, std::string_view key) {
    const std::size_t room = MaxWrittenLine - key.size() - std::string_view("=\n").size();
    if (value.size() <= room) {
        return;
    }
    value.resize(room);
    ZU_WEP::uString::StripTrailing(value, TrailingBlanks);  // A reader strips them too: the text reads back as written.
    ZU_WEP::Log(ZU_WEP::LogUnexpected, "Use case: value of \"%s\" cut to %zu characters", std::string(key).c_str(),
                value.size());
}

// A line feed in a value would let a name open or close a block. A CR ends no line and reads back as it is.
void BlankLineFeeds(std::string& value, std::string_view key) {
    if (value.find('\n') != std::string::npos) {
        std::replace(value.begin(), value.end(), '\n', ' ');
        ZU_WEP::Log(ZU_WEP::LogUnexpected, "Use case: line feed in \"%s\" written as a blank",
                    std::string(key).c_str());
    }
}

}  // namespace

void AppendBlockLine(std::string& out, std::string_view line) {
    out += line;
    out += '\n';
}

void AppendKeyLine(std::string& out, std::string_view key, std::string_view value) {
    std::string text(value.substr(0, value.find('\0')));
    CutToLine(text, key);
    BlankLineFeeds(text, key);
    out += key;
    out += '=';
    AppendBlockLine(out, text);
}

void AppendKeyLine(std::string& out, std::string_view key, std::int32_t number) {
    AppendKeyLine(out, key, std::to_string(number));
}

}  // namespace Zu::Wep::Trace
