#include "source_utilities/Log.h"
#include "trace/dcm/LiveAttributeTable.h"
#include "trace/dcm/StmDeviceConfigManager.h"

namespace Zu::Wep::Trace {

bool StmDeviceConfigManager::LoadConfigurationLive() {
    LoadSTMConfigurationLive(m_configFileName);  // a missing settings file stops nothing
    if (!ConnectLiveSystem()) {
        return false;
    }
    FindChannelDriver();
    if (m_channelDriver != nullptr) {
        LoadLiveAttributes(*m_channelDriver, m_properties);
    }
    SaveAllConfiguration();
    return true;
}

void StmDeviceConfigManager::FindChannelDriver() {
    if (m_channelServer == nullptr || m_cpuInfo == nullptr) {
        return;
    }
    try {
        m_channelServer->GetChannelDriver(m_cpuInfo->name != nullptr ? m_cpuInfo->name : "", m_channelDriver);
    } catch (...) {
        ZU_WEP::Log(ZU_WEP::LogError, "STM DCM LoadConfigurationLive: get channel driver failed");
    }
}

}  // namespace Zu::Wep::Trace
