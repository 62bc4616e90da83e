#include "trace/format/ObjectFileSection.h"

#include <optional>

#include "trace/format/LittleEndian.h"

namespace Zu::Wep::Trace {

namespace {

constexpr std::size_t kTimeStampSize = 8;

/// Takes a zero-terminated text off the front of `rest`; nothing when its zero byte is missing.
std::optional<std::string_view> TakeText(std::string_view& rest) {
    const std::size_t end = rest.find('\0');
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view text = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return text;
}

/// False where the entry at the front of `rest` runs past it.
bool TakeEntry(std::string_view& rest, const ObjectFileTaker& take) {
    const auto name = TakeText(rest);
    const auto fileName = name ? TakeText(rest) : std::nullopt;
    if (!fileName || rest.size() < kTimeStampSize) {
        return false;
    }
    const auto timeStamp = LoadLittleEndian<std::int64_t>(rest.data());
    rest.remove_prefix(kTimeStampSize);
    take(*name, *fileName, timeStamp);
    return true;
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

bool ReadObjectFileEntries(std::string_view payload, const ObjectFileTaker& take) {
    while (!payload.empty()) {
        if (!TakeEntry(payload, take)) {
            return false;
        }
    }
    return true;
}

}  // namespace Zu::Wep::Trace
