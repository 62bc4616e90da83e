#include "tool/model/CaptureLoader.h"

#include <fmt/format.h>

#include <optional>

#include "tool/capture/Container.h"
#include "tool/model/ConfigurationReader.h"
#include "tool/model/LoadableText.h"
#include "tool/model/ObjectFiles.h"
#include "tool/model/SettingsLoader.h"
#include "tool/plugin/Manager.h"
#include "tool/plugin/PluginSession.h"
#include "trace/dcm/ObjectFileSection.h"
#include "trace/dcm/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

/// One of the three sections that make a configuration.
struct CaptureLoader::Part {
    const char* name;
    unsigned version;
    bool isText;
    const Section* section = nullptr;
    std::string payload = {};

    void Read(const Container& container) {
        section = container.Find(name, version);
        if (section != nullptr && !section->IsTooShort()) {
            payload = container.ReadPayload(*section, 0, section->PayloadLength());
        }
    }

    std::optional<std::string> Doubt() const {
        if (section == nullptr) {
            return fmt::format("there is no section {} (version {}), so hosts can't load the configuration", name,
                               version);
        }
        if (section->IsTooShort()) {
            return fmt::format("the length that section {} states does not even cover its header", name);
        }
        if (isText && section->IsEmpty()) {
            return fmt::format("section {} is empty, so hosts can't load the configuration", name);
        }
        if (payload.size() < section->PayloadLength()) {
            return fmt::format("the file ends within section {}: {} of {} bytes are there", name, payload.size(),
                               section->PayloadLength());
        }
        return std::nullopt;
    }
};

struct CaptureLoader::Parts {
    explicit Parts(const Container& container) {
        common.Read(container);
        device.Read(container);
        stm.Read(container);
    }

    Part common{kCommonSectionName, kCommonSectionVersion, false};
    Part device{kDeviceSectionName, kDeviceSectionVersion, true};
    Part stm{kStmSectionName, kStmSectionVersion, true};
};

namespace {

constexpr char kEndsWithinEntry[] = " ends within an object file";

/// What the plug-in's log tells and the sections don't.
void AddLogged(std::vector<PluginMessage> messages, LoadedConfiguration& loaded) {
    for (PluginMessage& message : messages) {
        const bool isEntry = message.text.find(kEndsWithinEntry) != std::string::npos;
        const bool isReason = !loaded.isLoaded && loaded.doubts.empty() && message.kind == PluginMessage::Kind::Error;
        if (isEntry) {
            loaded.doubts.emplace_back("the list of object files ends within one; the whole ones before it count");
        } else if (isReason) {
            loaded.doubts.push_back(std::move(message.text));
        }
    }
}

}  // namespace

LoadedConfiguration CaptureLoader::Load(const std::string& path, Manager& manager) const {
    const Container container(path);
    const Parts parts(container);
    LoadedConfiguration loaded;
    loaded.path = path;
    loaded.kind = ConfigurationKind::Capture;
    m_session.log.Take();
    loaded.isLoaded = manager.Load(path, TRACE_DATA_FILE_TDF);
    std::vector<PluginMessage> messages = m_session.log.Take();
    loaded.hasSettings = loaded.isLoaded || LoadRest(parts, manager);
    loaded.hasObjectFiles = parts.common.section != nullptr;
    loaded.hasDeviceText = !parts.device.payload.empty() && parts.device.payload != kNoDeviceText;
    loaded.configuration = ReadConfiguration(manager);
    loaded.configuration.objectFiles = ObjectFiles::Parse(parts.common.payload);

    for (const Part* part : {&parts.common, &parts.device, &parts.stm}) {
        if (const auto doubt = part->Doubt()) {
            loaded.doubts.push_back(*doubt);
        }
    }
    if (!loaded.isLoaded && !container.IsWhole()) {
        loaded.doubts.push_back(
            fmt::format("a search for sections ends at offset {}, what is behind it is lost to hosts; try recover",
                        container.StopOffset()));
    }
    if (loaded.hasSettings) {
        for (std::string& doubt : SettingsLoader(m_session).DoubtsAbout(parts.stm.payload)) {
            loaded.doubts.push_back(std::move(doubt));
        }
    }
    AddLogged(std::move(messages), loaded);
    return loaded;
}

bool CaptureLoader::LoadRest(const Parts& parts, Manager& manager) const {
    if (parts.stm.section == nullptr || parts.stm.section->IsEmpty()) {
        return false;
    }
    const std::string rest = m_session.WorkingFile("rest.tdf");
    m_session.container.Create(rest);
    for (const Part* part : {&parts.common, &parts.device, &parts.stm}) {
        m_session.container.AppendSection(rest, part->name, part->version,
                                          part->isText ? LoadableText(part->payload) : part->payload);
    }
    return manager.Load(rest, TRACE_DATA_FILE_TDF);
}

}  // namespace stmdcm
