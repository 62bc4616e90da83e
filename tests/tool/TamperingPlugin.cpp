#include <dlfcn.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "trace/dcm/DeviceConfigManager.h"

namespace {

template <class Function>
Function Real(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/// Changes one digit in the capture that the demo saved.
void Tamper(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const std::string line = "STM_ATB_Id = 42";
    if (const std::size_t place = bytes.find(line); place != std::string::npos) {
        bytes[place + line.size() - 1] = '3';
        std::ofstream(path, std::ios::binary) << bytes;
    }
}

}  // namespace

void* CreateDeviceConfigManager(Zu::Wep::Trace::CPUInfo* cpu, Zu::Wep::Trace::CDeviceIdentifier* id) {
    return Real<decltype(&CreateDeviceConfigManager)>("CreateDeviceConfigManager")(cpu, id);
}

void DestroyDeviceConfigManager(Zu::Wep::Trace::CDeviceConfigManager* manager) {
    Real<decltype(&DestroyDeviceConfigManager)>("DestroyDeviceConfigManager")(manager);
    Tamper(std::string(std::getenv("HOME")) + "/saved.tdf");
}
