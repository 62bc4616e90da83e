#include "tool/change/ConfigurationBytes.h"

#include "tool/Failure.h"
#include "tool/model/ConfigurationReader.h"
#include "tool/model/ConfigurationWriter.h"
#include "tool/model/LoadableText.h"
#include "tool/plugin/Manager.h"
#include "tool/plugin/PluginSession.h"
#include "trace/dcm/ObjectFileSection.h"
#include "trace/dcm/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr char kCpu[] = "stmdcm";

}  // namespace

std::string ConfigurationBytes::SettingsText(Manager& manager) const {
    const std::string path = ConfigurationWriter(m_session).MakeCapture(manager);
    return m_session.container.ReadSection(path, kStmSectionName, kStmSectionVersion);
}

void ConfigurationBytes::Load(Manager& manager, std::string_view text, std::string_view device) const {
    const std::string path = m_session.WorkingFile("wrapped.tdf");
    m_session.container.Create(path);
    m_session.container.AppendSection(path, kDeviceSectionName, kDeviceSectionVersion, LoadableText(device));
    m_session.container.AppendSection(path, kCommonSectionName, kCommonSectionVersion, {});
    m_session.container.AppendSection(path, kStmSectionName, kStmSectionVersion, LoadableText(text));
    if (!manager.Load(path, TRACE_DATA_FILE_TDF)) {
        throw Failure(path + ": the plug-in can't load the configuration");
    }
}

Configuration ConfigurationBytes::Read(std::string_view text, std::string_view device) const {
    Manager manager(m_session.plugin, kCpu);
    Load(manager, text, device);
    return ReadConfiguration(manager);
}

}  // namespace stmdcm
