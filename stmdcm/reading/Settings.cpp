#include "stmdcm/reading/Settings.h"

#include <utility>

#include "trace/format/BlockWriter.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

ApplyProperty Settings::Applier() {
    return [this](std::string_view name, std::string_view value) { return SetFromText(properties, name, value); };
}

void Settings::ReadDevice(std::string_view text, TextReporter* reporter) { ReadDeviceText(text, Applier(), reporter); }

bool Settings::Read(std::string text, const LineLimits& limits) {
    const SettingsText settings(std::move(text), limits, Applier(), nullptr);
    Read(settings.Blocks(), nullptr);
    return settings.IsClean();
}

std::string Settings::Text() {
    std::string text;
    BlockWriteReporter nobody;
    AppendPropertyLines(properties, text);
    ForEach([&](const auto& record) { record.Save(text, nobody); });
    return text;
}

}  // namespace stmdcm
