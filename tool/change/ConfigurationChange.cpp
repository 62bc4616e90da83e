#include "tool/change/ConfigurationChange.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "source_utilities/ReplaceFile.h"
#include "tool/Failure.h"
#include "tool/capture/CaptureEditor.h"
#include "tool/change/UnreadText.h"
#include "tool/model/ConfigurationReader.h"
#include "tool/model/ConfigurationSource.h"
#include "tool/model/SettingsLoader.h"
#include "tool/plugin/Manager.h"
#include "tool/plugin/PluginSession.h"
#include "trace/dcm/ObjectFileSection.h"
#include "trace/dcm/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr char kCpu[] = "stmdcm";

/// Nothing for a section that is missing or empty: hosts load neither.
std::optional<std::string> ReadText(const Container& capture, const char* name, std::uint32_t version) {
    const Section* section = capture.Find(name, version);
    return section == nullptr || section->IsEmpty()
               ? std::nullopt
               : std::optional(capture.ReadPayload(*section, 0, section->PayloadLength()));
}

/// "no section DEVID"
std::string Lacking(const Container& capture, const char* name, std::uint32_t version) {
    return fmt::format("{} section {}", capture.Find(name, version) == nullptr ? "no" : "nothing in", name);
}

void AppendTo(std::vector<std::string>& all, std::vector<std::string> more) {
    std::move(more.begin(), more.end(), std::back_inserter(all));
}

}  // namespace

struct ConfigurationChange::Plan {
    ChangeResult result;
    std::vector<NewSection> sections;
};

ChangeResult ConfigurationChange::InCapture(const std::string& path, Missing missing) const {
    CaptureEditor editor(path);
    Plan plan = Make(editor.Contents(), missing);
    if (plan.result.HasChanges()) {
        editor.Replace(plan.sections);
        plan.result.isWritten = true;
    }
    return std::move(plan.result);
}

ChangeResult ConfigurationChange::TryInCapture(const std::string& path, Missing missing) const {
    return Make(Container(path), missing).result;
}

ConfigurationChange::Plan ConfigurationChange::Make(const Container& capture, Missing missing) const {
    const auto device = ReadText(capture, kDeviceSectionName, kDeviceSectionVersion);
    const bool hasCommon = capture.Find(kCommonSectionName, kCommonSectionVersion) != nullptr;
    const auto text = ReadText(capture, kStmSectionName, kStmSectionVersion);
    Plan plan;
    plan.result.path = capture.Path();
    plan.result.isNew = !hasCommon || !text;
    if (!device) {
        throw Failure(
            fmt::format("{}: there is {}, which the host writes, so hosts can't load a configuration; "
                        "nothing was changed",
                        capture.Path(), Lacking(capture, kDeviceSectionName, kDeviceSectionVersion)));
    }
    if (plan.result.isNew && missing == Missing::IsFailure) {
        throw Failure(fmt::format("{}: there is {}, so no configuration; stmdcm apply can give it one", capture.Path(),
                                  hasCommon ? Lacking(capture, kStmSectionName, kStmSectionVersion)
                                            : Lacking(capture, kCommonSectionName, kCommonSectionVersion)));
    }
    Manager manager(m_session.plugin, kCpu);
    m_bytes.Load(manager, text.value_or(""), *device);
    if (text) {
        AppendTo(plan.result.doubts, SettingsLoader(m_session).DoubtsAbout(*text));
    }
    std::string changed = Change(manager, text.value_or(""), plan.result);
    if (!hasCommon) {
        plan.sections.push_back({kCommonSectionName, kCommonSectionVersion, {}});
    }
    plan.sections.push_back({kStmSectionName, kStmSectionVersion, std::move(changed)});
    return plan;
}

std::string ConfigurationChange::Change(Manager& manager, std::string_view oldText, ChangeResult& result) const {
    const Configuration before = ReadConfiguration(manager);
    AppendTo(result.doubts, UnreadBlocks(oldText, m_bytes.SettingsText(manager)));
    m_edit(manager);
    const Configuration after = ReadConfiguration(manager);
    result.changes = Compare(before, after);
    std::string text = m_bytes.SettingsText(manager);
    CheckKept(after, text, result);
    return text;
}

/// The text cuts long names, for one.
void ConfigurationChange::CheckKept(const Configuration& wanted, const std::string& text, ChangeResult& result) const {
    for (const Difference& lost : Compare(wanted, m_bytes.Read(text))) {
        result.doubts.push_back(fmt::format("{} {} {}: \"{}\" is kept as \"{}\"", lost.kind, lost.item, lost.field,
                                            lost.left.value_or(""), lost.right.value_or("")));
    }
}

ChangeResult ConfigurationChange::InSettings(const std::string& path, bool force) const {
    LockedFile file(path);
    LoadedConfiguration loaded = ConfigurationSource(m_session).Load(path);
    loaded.RequireLoaded();
    const CaptureFile content(path, CaptureFile::Identifier::Optional);
    const std::string old = content.Read(0, content.Size());
    Manager manager(m_session.plugin, kCpu);
    m_bytes.Load(manager, old);
    ChangeResult result{path};
    result.doubts = std::move(loaded.doubts);
    const std::string text = Change(manager, old, result);
    if (!result.HasChanges()) {
        return result;
    }
    if (!result.doubts.empty() && !force) {
        throw Failure(fmt::format("{}: parts of the file would be lost ({}); --force writes it all the same", path,
                                  fmt::join(result.doubts, "; ")));
    }
    if (ZU_WEP::ReplaceFile(path, [&text] { return text; }) != ZU_WEP::ReplaceResult::Written) {
        const int error = errno;
        throw Failure(fmt::format("{}: the file can't be written: {}", path, ZU_WEP::ErrnoText(error)));
    }
    result.isWritten = true;
    return result;
}

}  // namespace stmdcm
