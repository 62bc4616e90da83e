#include "tool/model/ObjectFiles.h"

#include <sys/stat.h>

#include <utility>

#include "tool/plugin/Manager.h"
#include "tool/plugin/TraceDataFile.h"
#include "trace/dcm/ObjectFileSection.h"
#include "trace/tdf/LittleEndian.h"

namespace stmdcm {

namespace {

std::optional<std::int64_t> ModificationTime(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? std::optional<std::int64_t>(status.st_mtime) : std::nullopt;
}

/// Takes a text and its terminating zero off the front of `payload`; false where it has none.
bool TakeText(std::string_view& payload, std::string& text) {
    const std::size_t end = payload.find('\0');
    if (end == std::string_view::npos) {
        return false;
    }
    text = payload.substr(0, end);
    payload.remove_prefix(end + 1);
    return true;
}

bool TakeEntry(std::string_view& payload, ObjectFile& file) {
    if (!TakeText(payload, file.name) || !TakeText(payload, file.path) || payload.size() < sizeof file.recorded) {
        return false;
    }
    file.recorded = Zu::Wep::Trace::LoadLittleEndian<std::int64_t>(payload.data());
    payload.remove_prefix(sizeof file.recorded);
    return true;
}

}  // namespace

std::vector<ObjectFile> ObjectFiles::Recorded(TraceDataFile& container, const std::string& capture) {
    return Parse(
        container.ReadSection(capture, Zu::Wep::Trace::kCommonSectionName, Zu::Wep::Trace::kCommonSectionVersion));
}

std::vector<ObjectFile> ObjectFiles::HeldBy(const Manager& manager, const std::vector<ObjectFile>& recorded) {
    std::vector<ObjectFile> held;
    for (ObjectFile file : recorded) {
        file.path = manager.ObjectFile(file.name);
        file.modified = ModificationTime(file.path);
        file.recorded = file.modified.value_or(file.recorded);
        held.push_back(std::move(file));
    }
    return held;
}

/// As the plug-in does: an entry that is not whole is dropped with everything behind it.
std::vector<ObjectFile> ObjectFiles::Parse(std::string_view payload) {
    std::vector<ObjectFile> files;
    for (ObjectFile file; TakeEntry(payload, file);) {
        file.modified = ModificationTime(file.path);
        files.push_back(file);
    }
    return files;
}

}  // namespace stmdcm
