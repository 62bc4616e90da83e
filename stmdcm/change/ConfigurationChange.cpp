#include "stmdcm/change/ConfigurationChange.h"

#include <fmt/format.h>

#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "stmdcm/reading/Plausibility.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

struct ConfigurationChange::Plan {
    ChangeResult result;
    std::vector<NewSection> sections;
};

namespace {

std::string Encode(const std::vector<ObjectFile>& files) {
    std::string payload;
    for (const ObjectFile& file : files) {
        AppendObjectFileEntry(payload, {file.name, file.path, file.recorded});
    }
    return payload;
}

}  // namespace

ChangeResult ConfigurationChange::InCapture(const std::string& path, Missing missing, ChangeMode mode) const {
    CaptureEditor editor(path, mode);
    Plan plan = Make(editor.Contents(), missing);
    if (plan.result.HasChanges()) {
        plan.result.isWritten = editor.Replace(plan.sections);
    }
    return std::move(plan.result);
}

ConfigurationChange::Plan ConfigurationChange::Make(const Container& capture, Missing missing) const {
    Reading reading = Read(capture);
    const bool hasCommon = reading.hasObjectFiles;
    Plan plan;
    plan.result.path = capture.Path();
    plan.result.isNew = !hasCommon || !reading.hasSettings;
    if (!reading.hasDevice) {
        throw Failure(capture.Path(),
                      fmt::format("there is nothing in section {}, which the host writes, so hosts can't load a "
                                  "configuration; nothing was changed",
                                  kDeviceSectionName));
    }
    if (plan.result.isNew && missing == Missing::IsFailure) {
        throw Failure(capture.Path(),
                      fmt::format("there is nothing in section {}, so no configuration; stmdcm apply can give it one",
                                  hasCommon ? kStmSectionName : kCommonSectionName));
    }
    plan.result.doubts = reading.Losses();
    const std::string objects = Encode(reading.configuration.objectFiles);
    const std::string text = reading.settings->Text();
    std::string newText = Change(reading, plan.result);
    std::string newObjects = Encode(reading.configuration.objectFiles);
    if (!hasCommon || newObjects != objects) {
        plan.sections.push_back({kCommonSectionName, kCommonSectionVersion, std::move(newObjects)});
    }
    if (!reading.hasSettings || newText != text) {
        plan.sections.push_back({kStmSectionName, kStmSectionVersion, std::move(newText)});
    }
    return plan;
}

std::string ConfigurationChange::Change(Reading& reading, ChangeResult& result) const {
    const Configuration before = std::exchange(reading.configuration, {});
    const StmProperties old = reading.settings->properties;
    m_edit(*reading.settings);
    result.warnings = NewWarnings(old, reading.settings->properties);
    reading.configuration.objectFiles = m_objectFiles.value_or(before.objectFiles);
    Fill(reading.configuration, *reading.settings);
    result.changes = Compare(before, reading.configuration);
    std::string text = reading.settings->Text();
    for (std::string& doubt : NotKept(reading.configuration, text)) {
        result.doubts.push_back(std::move(doubt));
    }
    return text;
}

std::vector<std::string> NotKept(const Configuration& wanted, const std::string& text) {
    Settings read;
    Configuration kept;
    read.Read(text);
    Fill(kept, read);
    kept.objectFiles = wanted.objectFiles;
    std::vector<std::string> sentences;
    for (const Difference& lost : Compare(wanted, kept)) {
        sentences.push_back(fmt::format("{} {} {}: \"{}\" is kept as \"{}\"", lost.kind, lost.item, lost.field,
                                        lost.left.value_or(""), lost.right.value_or("")));
    }
    return sentences;
}

}  // namespace stmdcm
