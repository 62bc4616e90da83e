#include "tool/model/ObjectFiles.h"

#include <utility>

#include "tool/plugin/Manager.h"
#include "tool/plugin/TraceDataFile.h"
#include "trace/dcm/ModificationTime.h"
#include "trace/dcm/ObjectFileSection.h"

namespace stmdcm {

using Zu::Wep::Trace::ModificationTime;

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

std::vector<ObjectFile> ObjectFiles::Parse(std::string_view payload) {
    std::vector<ObjectFile> files;
    for (const Zu::Wep::Trace::ObjectFileEntry& entry : Zu::Wep::Trace::ParseObjectFileEntries(payload).entries) {
        files.push_back({entry.name, entry.fileName, entry.timeStamp, ModificationTime(entry.fileName)});
    }
    return files;
}

}  // namespace stmdcm
