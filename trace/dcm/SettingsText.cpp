#include "trace/dcm/SettingsText.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "trace/dcm/LimitedLineReader.h"
#include "trace/dcm/StmPropertyTable.h"

namespace Zu::Wep::Trace {

namespace {

constexpr char kPackedBlockStart[] = "{type";

/// What ends a field of a property line.
constexpr std::string_view kFieldEnds{" =\r\n\t"};

std::string_view NextField(std::string& line, std::size_t& position, std::size_t end) {
    const auto start = std::min(line.find_first_not_of(kFieldEnds, position), end);
    const auto stop = std::min(line.find_first_of(kFieldEnds, start), end);
    position = stop;
    if (stop < end) {
        line[stop] = '\0';
        ++position;
    }
    return {line.data() + start, stop - start};
}

/// Reads property lines and one-line blocks. Ends with the first line that is neither, and leaves it in `line`.
bool ReadProperties(LimitedLineReader& reader, std::string& line, std::size_t limit, std::string& blocks,
                    const ApplyProperty& apply) {
    while (!reader.AtEnd()) {
        reader.Next(line, limit);
        if (line.starts_with(kPackedBlockStart)) {
            UnfoldPackedBlock(blocks, line.data());
        } else if (line.starts_with('{')) {
            return true;
        } else {
            const KeyValue field = SplitKeyValue(line);
            if (field.key.empty() || field.value.empty() || !apply(std::string(field.key), std::string(field.value))) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace

void AppendPropertyLines(const StmProperties& properties, std::string& out) {
    for (const StmProperty& property : kStmProperties) {
        char text[256];
        std::snprintf(text, sizeof text, "%s = %d\n", property.name, NumberOf(properties, property));
        out += text;
    }
}

void UnfoldPackedBlock(std::string& out, char* line) {
    const std::size_t length = std::strlen(line);
    if (length == 0) {
        return;
    }
    out += line[0];
    out += '\n';
    line[length - 1] = '\0';  // one character only: a carriage return goes and the brace before it stays, meant so
    char* state = nullptr;
    for (char* field = strtok_r(line + 1, ",", &state); field != nullptr; field = strtok_r(nullptr, ",", &state)) {
        out += field;
        out += '\n';
    }
    out += "}\n";
}

KeyValue SplitKeyValue(std::string& line) {
    const std::size_t end = std::min(line.find('\0'), line.size());
    std::size_t position = 0;
    KeyValue result;
    result.key = NextField(line, position, end);
    result.value = NextField(line, position, end);
    return result;
}

SettingsTextResult ReadSettingsText(std::istream& in, const LineLimits& limits, const std::string& source,
                                    const ApplyProperty& apply) {
    SettingsTextResult result;
    LimitedLineReader reader(in, source);
    std::string line;
    result.clean = ReadProperties(reader, line, limits.property, result.blocks, apply);
    if (result.blocks.empty()) {  // one-line blocks and blocks of lines are not mixed
        result.blocks = line + '\n';
        while (!reader.AtEnd()) {
            reader.Next(line, limits.block);
            result.blocks += line;
            result.blocks += '\n';
        }
    }
    result.readable = !reader.Failed();
    result.clean = result.clean && result.readable && !reader.AnyCut();
    return result;
}

}  // namespace Zu::Wep::Trace
