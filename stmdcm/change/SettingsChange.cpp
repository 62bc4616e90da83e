#include "stmdcm/change/SettingsChange.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "source_utilities/ReplaceFile.h"
#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureFile.h"
#include "stmdcm/capture/InterruptBlock.h"
#include "stmdcm/capture/LockedFile.h"
#include "stmdcm/change/SettingsEdit.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "stmdcm/reading/Plausibility.h"
#include "stmdcm/reading/Words.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

std::string TextOf(const std::string& path) {
    const CaptureFile file(path, CaptureFile::Identifier::Optional);
    return file.Read(0, file.Size());
}

/// Sets it in the text unless the text sets it so already.
void SetOne(const Assignment& assignment, const StmProperties& before, SettingsEdit& edit, ChangeResult& result) {
    const StmProperty& row = RequireProperty(assignment.name);
    const std::int32_t old = NumberOf(before, row);
    const bool isNamed = edit.Names(row.name);
    if (isNamed && old == assignment.value) {
        return;
    }
    const auto unread = isNamed ? std::nullopt : edit.UnreadLine(row.name);
    if (unread) {
        result.doubts.push_back(fmt::format(
            "line {}: {} stands here, too, behind the end of the properties, where it is not read", *unread, row.name));
    }
    edit.Set(assignment);
    const auto words = [&](std::int32_t value) { return InWords(PropertyOf(row, value)); };
    result.changes.push_back(
        {"property", row.name, "value", isNamed ? std::optional(words(old)) : std::nullopt, words(assignment.value)});
}

/// Throws Failure unless `text` is read as `wanted`.
void RequireNothingElse(Reading& wanted, const std::string& text) {
    Fill(wanted.configuration, *wanted.settings);
    Settings after;
    Configuration configuration;
    const bool loads = after.Read(text, kFileLineLimits);
    Fill(configuration, after);
    if (!Compare(wanted.configuration, configuration).empty() || (wanted.loads && !loads)) {
        throw Failure(wanted.path,
                      "with the new values more of the text would be read otherwise than now; nothing "
                      "was changed; stmdcm check tells what is odd about it");
    }
}

}  // namespace

ChangeResult SetInSettings(const std::string& path, const std::vector<Assignment>& assignments, bool force,
                           ChangeMode mode) {
    const LockedFile file(path);
    Reading before = Read(path);
    SettingsEdit edit(TextOf(path));
    ChangeResult result{path};
    if (!before.hasSettings) {
        result.doubts.emplace_back("nothing of the file was read as settings");
    }
    for (const Assignment& assignment : assignments) {
        SetOne(assignment, before.settings->properties, edit, result);
    }
    if (!result.HasChanges()) {
        return result;
    }
    if (!result.doubts.empty() && !force) {
        throw Failure(path,
                      fmt::format("{}; --force adds a line in front that counts", fmt::join(result.doubts, "; ")));
    }
    std::vector<std::string> losses = before.Losses();
    for (std::string& loss : losses) {  // kept as it is, and as unread
        result.doubts.push_back(std::move(loss));
    }
    const std::string text = edit.Text();
    const StmProperties old = before.settings->properties;
    for (const Assignment& assignment : assignments) {
        assignment.ApplyTo(before.settings->properties);
    }
    result.warnings = NewWarnings(old, before.settings->properties);
    RequireNothingElse(before, text);
    if (mode == ChangeMode::DryRun) {
        return result;
    }
    const InterruptBlock block;  // or else the temporary file would be left
    if (ZU_WEP::ReplaceFile(path, [&] { return text; }) != ZU_WEP::ReplaceResult::Written) {
        const int error = errno;
        throw Failure(path, fmt::format("the file can't be written: {}", ZU_WEP::ErrnoText(error)));
    }
    result.isWritten = true;
    return result;
}

}  // namespace stmdcm
