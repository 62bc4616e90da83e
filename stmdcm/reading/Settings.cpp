#include "stmdcm/reading/Settings.h"

#include <utility>

#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

ApplyProperty Settings::Applier() {
    return [this](std::string_view name, std::string_view value) { return SetFromText(properties, name, value); };
}

void Settings::ReadDevice(std::string_view text, TextReporter* reporter) { ReadDeviceText(text, Applier(), reporter); }

bool Settings::Read(std::string text, const LineLimits& limits) {
    const SettingsText settings(std::move(text), limits, Applier(), nullptr);
    ReadRecords(settings.Blocks());
    return settings.IsClean();
}

void Settings::ReadRecords(const BlockText& blocks, TextReporter* reporter) {
    const auto read = [&](auto& record) {
        record.CleaupUsecases(false);
        BlockLines lines(record.kKind, blocks, reporter);
        record.Retrieve(lines);
    };
    read(sc);
    read(cpt);
    read(pmi);
}

std::string Settings::Text() const {
    std::string text;
    BlockWriteReporter nobody;
    AppendPropertyLines(properties, text);
    sc.Save(text, nobody);
    cpt.Save(text, nobody);
    pmi.Save(text, nobody);
    return text;
}

}  // namespace stmdcm
