#include "stmdcm/change/AppliedParts.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "stmdcm/capture/CaptureFile.h"
#include "stmdcm/change/Assignment.h"
#include "stmdcm/change/SettingsEdit.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr const char* kGroups[] = {"properties", "usecases", "objects"};

}  // namespace

PartNames::PartNames(const std::vector<std::string>& words) : m_words(words.begin(), words.end()) {
    for (const std::string& word : words) {
        if (std::find(std::begin(kGroups), std::end(kGroups), word) == std::end(kGroups)) {
            RequireProperty(word);
        }
    }
}

AppliedParts AppliedParts::NamedBy(const Reading& source) {
    AppliedParts parts;
    if (source.kind == ConfigurationKind::Capture) {
        for (const StmProperty& row : kStmProperties) {
            parts.properties.insert(row.name);
        }
        parts.usecases = true;
        parts.objects = source.hasObjectFiles;
        return parts;
    }
    const CaptureFile file(source.path, CaptureFile::Identifier::Optional);
    const SettingsEdit text(file.Read(0, file.Size()));
    for (const StmProperty& row : kStmProperties) {
        if (text.Names(row.name)) {
            parts.properties.insert(row.name);
        }
    }
    parts.usecases = source.configuration.UsecaseCount() > 0;
    return parts;
}

void AppliedParts::Narrow(const PartNames& only, const PartNames& except) {
    for (auto name = properties.begin(); name != properties.end();) {
        const bool isWanted = (only.IsEmpty() || only.HasProperty(*name)) && !except.HasProperty(*name);
        name = isWanted ? std::next(name) : properties.erase(name);
    }
    const auto isWanted = [&](const char* group) { return (only.IsEmpty() || only.Has(group)) && !except.Has(group); };
    usecases = usecases && isWanted("usecases");
    objects = objects && isWanted("objects");
}

ConfigurationChange AppliedParts::ChangeTo(const Reading& source) const {
    const auto edit = [&source, parts = *this](Settings& settings) {
        for (const std::string& name : parts.properties) {
            Assignment{name, NumberOf(source.settings->properties, RequireProperty(name))}.ApplyTo(settings.properties);
        }
        if (parts.usecases) {
            settings.CopyFrom(*source.settings);
        }
    };
    return objects ? ConfigurationChange(edit, source.configuration.objectFiles) : ConfigurationChange(edit);
}

}  // namespace stmdcm
