#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "stmdcm/explain/Statements.h"
#include "stmdcm/pins/PinSection.h"
#include "stmdcm/pins/Sha256.h"
#include "stmdcm/reading/ObjectFileCheck.h"
#include "stmdcm/reading/Words.h"
#include "trace/format/ObjectFileSection.h"

namespace stmdcm {

namespace {

Explanation& Of(const std::string& name, std::vector<Explanation>& found) {
    const auto known =
        std::find_if(found.begin(), found.end(), [&](const Explanation& each) { return each.item == name; });
    return known != found.end() ? *known : found.emplace_back(Explanation{"object file", name, "", {}});
}

void AddEntries(const StatingSection& section, const std::string& name, std::vector<Explanation>& found) {
    std::vector<ObjectFile> files;
    ParseObjectFiles(section.text, files);
    for (std::size_t i = 0; i < files.size(); ++i) {
        const ObjectFile& file = files[i];
        if (file.name != name && file.path != name) {
            continue;
        }
        Explanation& explanation = Of(file.name, found);
        Statement statement{section.name,
                            section.place,
                            fmt::format("{}, recorded {}", Escaped(file.path), InWords(Unit::UnixTime, file.recorded)),
                            "",
                            section.standing,
                            fmt::format("entry {}; {}", i + 1, section.why)};
        if (section.IsRead() && explanation.value.empty()) {
            statement.why += fmt::format("; on this machine: {}", file.DiskStateName());
            explanation.value = Escaped(file.path);
        } else if (section.IsRead()) {
            statement.standing = Standing::Beside;
            statement.why += "; kept, and asked for the name a reader gives the first";
        }
        explanation.statements.push_back(std::move(statement));
    }
}

void AddPins(const StatingSection& section, std::vector<Explanation>& found) {
    std::vector<Pin> pins;
    ReadPins(section.text, pins);
    for (const Pin& pin : pins) {
        const auto known =
            std::find_if(found.begin(), found.end(), [&](const Explanation& each) { return each.item == pin.name; });
        if (known == found.end()) {
            continue;
        }
        const std::string id = InHexadecimal(pin.image.buildId);
        known->statements.push_back(
            {section.name, section.place,
             fmt::format("{} bytes, SHA-256 {}, {}", pin.image.size, InHexadecimal(pin.image.sha256),
                         id.empty() ? "no build-id" : "build-id " + id),
             "", section.IsRead() ? Standing::Beside : section.standing, section.why});
    }
}

}  // namespace

std::vector<Explanation> ExplainImages(const StatingFile& file, const std::string& name) {
    std::vector<Explanation> found;
    for (const StatingSection& section : file.Of(Zu::Wep::Trace::kCommonSectionName)) {
        AddEntries(section, name, found);
    }
    for (const StatingSection& section : file.Of(kPinSectionName)) {
        AddPins(section, found);
    }
    return found;
}

}  // namespace stmdcm
