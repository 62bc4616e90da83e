#include "stmdcm/plugin/Manager.h"

#include <fmt/format.h>

#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/plugin/Plugin.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

Manager::Manager(const Plugin& plugin, std::string cpuName, ObjectFileQuestions::Answer answer)
    : m_cpuName(std::move(cpuName)),
      m_cpu{m_cpuName.c_str(), 0, 0, 0},
      m_questions(std::move(answer)),
      m_manager(static_cast<Interface*>(static_cast<CDeviceConfigManager*>(plugin.Create()(&m_cpu, nullptr))),
                plugin.Destroy()) {
    if (m_manager == nullptr) {
        throw Failure(plugin.Path().string(), "the plug-in made no manager");
    }
    m_manager->RegisterEventHandler(&m_questions);
}

bool Manager::Load(const std::string& file, eTraceDataFileType type) {
    return m_manager->LoadConfiguration(file, type);
}

bool Manager::Save(const std::string& file, eTraceDataFileType type) {
    return m_manager->SaveConfiguration(file, type);
}

bool Manager::LoadLive() { return m_manager->LoadConfigurationLive(); }

std::int32_t Manager::Property(const std::string& name) const {
    ConfigPropertyValue value;
    if (!m_manager->GetProperty(name, value)) {
        throw Failure(fmt::format("the plug-in knows no property \"{}\"", name));
    }
    return value.type == ConfigPropertyValue::Boolean ? std::int32_t{value.value.boolean} : value.value.integer;
}

void Manager::SetProperty(const std::string& name, std::int32_t value) {
    ConfigPropertyValue property(value);
    if (!m_manager->SetSTMProperty(name, property)) {
        throw Failure(fmt::format("the plug-in can't set a property \"{}\"", name));
    }
}

std::string Manager::ObjectFile(const std::string& name) const {
    std::string path;
    m_manager->GetObjectFile(name, path);
    return path;
}

}  // namespace stmdcm
