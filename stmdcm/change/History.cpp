#include "stmdcm/change/History.h"

#include <fmt/format.h>

#include <algorithm>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "stmdcm/reading/ObjectFileCheck.h"
#include "stmdcm/reading/Reading.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/RetiredSection.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr struct {
    const char* name;
    std::uint32_t version;
} kKinds[] = {{kCommonSectionName, kCommonSectionVersion}, {kStmSectionName, kStmSectionVersion}};

/// The name of the configuration section, nullptr for any other.
const char* KindOf(const Container& container, const Section& section) {
    if (section.use == SectionUse::Unreachable) {
        return nullptr;
    }
    for (const auto& kind : kKinds) {
        if (container.IsOrWas(section, kind.name, kind.version)) {
            return kind.name;
        }
    }
    return nullptr;
}

}  // namespace

History::History(const Container& container) : m_container(container) {
    for (const Section& section : container.Sections()) {
        if (const char* name = KindOf(container, section)) {
            m_entries.push_back({m_entries.size() + 1, name, section});
        }
    }
}

std::string History::Payload(const HistoryEntry& entry) const { return m_container.ReadPayload(entry.section); }

const HistoryEntry& History::At(std::size_t number) const {
    if (number == 0 || number > m_entries.size()) {
        throw Failure(m_container.Path(),
                      fmt::format("there is no configuration {}, stmdcm history shows the {} that there are", number,
                                  m_entries.size()));
    }
    return m_entries[number - 1];
}

const HistoryEntry* History::Current(const std::string& name) const {
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [&](const HistoryEntry& entry) { return entry.IsCurrent() && entry.name == name; });
    return found == m_entries.end() ? nullptr : &*found;
}

std::optional<std::vector<Difference>> History::Compare(const HistoryEntry& entry) const {
    const HistoryEntry* current = Current(entry.name);
    if (current == nullptr) {
        return std::nullopt;
    }
    return stmdcm::Compare(Read(entry), Read(*current));
}

Configuration History::Read(const HistoryEntry& entry) const {
    Configuration configuration;
    if (entry.name == std::string_view(kCommonSectionName)) {
        ParseObjectFiles(Payload(entry), configuration.objectFiles);
        return configuration;
    }
    Settings settings;
    if (const Section* device = m_container.Find(kDeviceSectionName, kDeviceSectionVersion)) {
        settings.ReadDevice(m_container.ReadPayload(*device));
    }
    settings.Read(Payload(entry));
    Fill(configuration, settings);
    return configuration;
}

namespace {

/// One that comes in force again. `doubts` gets what of it is not read. Throws Failure where it can't.
NewSection Again(const Container& container, const HistoryEntry& entry, std::vector<std::string>& doubts) {
    if (container.IsTorn(entry.section)) {
        throw Failure(container.Path(),
                      fmt::format("the end of the file cuts configuration {} off; nothing was changed", entry.number));
    }
    if (entry.name == std::string_view(kStmSectionName) && entry.section.IsEmpty()) {
        throw Failure(
            container.Path(),
            fmt::format("configuration {} is empty, so hosts could not load it; nothing was changed", entry.number));
    }
    std::string payload = container.ReadPayload(entry.section);
    for (std::string& loss : PayloadLosses({entry.name, entry.section.offset}, payload)) {
        doubts.push_back(std::move(loss));
    }
    return {entry.name, LiveVersion(entry.section.version), std::move(payload)};
}

/// The one that `current` has retired; nullptr for none.
const HistoryEntry* Before(const History& history, const HistoryEntry& current) {
    const HistoryEntry* before = nullptr;
    for (const HistoryEntry& entry : history.Entries()) {
        const bool isOlder = entry.name == std::string_view(current.name) && entry.number < current.number;
        if (isOlder && entry.section.use == SectionUse::Retired &&
            history.Payload(entry) != history.Payload(current)) {  // what an interrupted change left is the same
            before = &entry;
        }
    }
    return before;
}

/// What one change put in force: the section that was appended last, and one directly in front of it.
std::vector<const HistoryEntry*> LastChange(const History& history) {
    const HistoryEntry* common = history.Current(kCommonSectionName);
    const HistoryEntry* stm = history.Current(kStmSectionName);
    if (common == nullptr || stm == nullptr) {
        return {};
    }
    if (common->section.offset > stm->section.offset) {
        return {common};
    }
    const bool isOneChange = common->section.End() == stm->section.offset && Before(history, *common) != nullptr;
    return isOneChange ? std::vector{common, stm} : std::vector{stm};
}

}  // namespace

RestoreResult RestoreConfiguration(const std::string& path, std::size_t number, ChangeMode mode) {
    CaptureEditor editor(path, mode);
    const History history(editor.Contents());
    RestoreResult result{history.At(number)};
    NewSection again = Again(editor.Contents(), result.restored, result.doubts);
    const HistoryEntry* current = history.Current(result.restored.name);
    result.hasChanges = current == nullptr || history.Payload(*current) != again.payload;
    if (result.hasChanges) {
        result.isWritten = editor.Replace({std::move(again)});
    }
    return result;
}

UndoResult UndoLastChange(const std::string& path, ChangeMode mode) {
    CaptureEditor editor(path, mode);
    const History history(editor.Contents());
    UndoResult result;
    std::vector<NewSection> sections;
    for (const HistoryEntry* current : LastChange(history)) {
        if (const HistoryEntry* before = Before(history, *current)) {
            sections.push_back(Again(editor.Contents(), *before, result.doubts));
            result.restored.push_back(*before);
            for (Difference& change : history.Compare(*before).value_or(std::vector<Difference>())) {
                std::swap(change.left, change.right);
                result.changes.push_back(std::move(change));
            }
        }
    }
    if (sections.empty()) {
        throw Failure(path, "nothing was changed in it yet, so there is nothing to undo");
    }
    result.isWritten = editor.Replace(sections);
    return result;
}

}  // namespace stmdcm
