#include "trace/dcm/DeviceConfigManager.h"

#include "trace/dcm/StmDeviceConfigManager.h"

using namespace Zu::Wep::Trace;

void* CreateDeviceConfigManager(CPUInfo* cpu, CDeviceIdentifier* id) {
    if (cpu == nullptr) {
        return nullptr;
    }
    CDeviceConfigManager* manager = new StmDeviceConfigManager(cpu, id);
    return manager;
}

void DestroyDeviceConfigManager(CDeviceConfigManager* manager) { delete manager; }
