#include "trace/dcm/ObjectFileSection.h"

#include <optional>

#include "trace/tdf/LittleEndian.h"

namespace Zu::Wep::Trace {

namespace {

constexpr std::size_t kTimeStampSize = 8;

/// Takes a zero-terminated text off the front of `rest`; nothing when its zero byte is missing.
std::optional<std::string> TakeText(std::string_view& rest) {
    const std::size_t end = rest.find('\0');
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    std::string text(rest.substr(0, end));
    rest.remove_prefix(end + 1);
    return text;
}

std::optional<ObjectFileEntry> TakeEntry(std::string_view& rest) {
    const auto name = TakeText(rest);
    const auto fileName = name ? TakeText(rest) : std::nullopt;
    if (!fileName || rest.size() < kTimeStampSize) {
        return std::nullopt;
    }
    const ObjectFileEntry entry{*name, *fileName, LoadLittleEndian<std::int64_t>(rest.data())};
    rest.remove_prefix(kTimeStampSize);
    return entry;
}

}  // namespace

void AppendObjectFileEntry(std::string& payload, const ObjectFileEntry& entry) {
    payload.append(entry.name, 0, entry.name.find('\0'));
    payload += '\0';
    payload.append(entry.fileName, 0, entry.fileName.find('\0'));
    payload += '\0';
    char stamp[kTimeStampSize];
    StoreLittleEndian(entry.timeStamp, stamp);
    payload.append(stamp, sizeof stamp);
}

ObjectFileEntries ParseObjectFileEntries(std::string_view payload) {
    ObjectFileEntries result;
    while (!payload.empty() && result.complete) {
        if (auto entry = TakeEntry(payload)) {
            result.entries.push_back(*std::move(entry));
        } else {
            result.complete = false;
        }
    }
    return result;
}

}  // namespace Zu::Wep::Trace
