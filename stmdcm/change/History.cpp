#include "stmdcm/change/History.h"

#include <fmt/format.h>

#include <algorithm>

#include "stmdcm/Failure.h"
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

bool HistoryEntry::IsEarlier() const { return section.use == SectionUse::Retired && WasInForce(section.version); }

const char* HistoryEntry::State() const {
    if (section.use == SectionUse::Read) {
        return "current";
    }
    return section.use == SectionUse::Retired && !IsEarlier() ? "never in force" : SectionUseText(section.use);
}

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

NewSection History::Renewed(const HistoryEntry& entry, std::vector<std::string>& doubts) const {
    if (m_container.IsTorn(entry.section)) {
        throw Failure(m_container.Path(),
                      fmt::format("the end of the file cuts configuration {} off; nothing was changed", entry.number));
    }
    if (entry.name == std::string_view(kStmSectionName) && entry.section.IsEmpty()) {
        throw Failure(
            m_container.Path(),
            fmt::format("configuration {} is empty, so hosts could not load it; nothing was changed", entry.number));
    }
    std::string payload = Payload(entry);
    for (std::string& loss : PayloadLosses({entry.name, entry.section.offset}, payload)) {
        doubts.push_back(std::move(loss));
    }
    return {entry.name, LiveVersion(entry.section.version), std::move(payload)};
}

const HistoryEntry* History::Before(const HistoryEntry& entry) const {
    for (std::size_t index = entry.number - 1; index-- > 0;) {
        const HistoryEntry& older = m_entries[index];
        if (older.name == std::string_view(entry.name) && older.IsEarlier() &&
            (ChangeNumber(older.section.version) != 0 || Payload(older) != Payload(entry))) {
            return &older;
        }
    }
    return nullptr;
}

RestoreResult RestoreConfiguration(const std::string& path, std::size_t number, ChangeMode mode) {
    CaptureEditor editor(path, mode);
    const History history(editor.Contents());
    RestoreResult result{history.At(number)};
    NewSection again = history.Renewed(result.restored, result.doubts);
    const HistoryEntry* current = history.Current(result.restored.name);
    result.hasChanges = current == nullptr || history.Payload(*current) != again.payload;
    if (result.hasChanges) {
        result.isWritten = editor.Replace({std::move(again)});
    }
    return result;
}

}  // namespace stmdcm
