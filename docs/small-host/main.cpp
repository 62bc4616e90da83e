// A complete host: loads the plug-in, asks it what a capture was recorded with, changes a setting and saves it.
// Usage: small_host libStmDCM.so CAPTURE.tdf COPY.tdf

#include <dlfcn.h>

#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "trace/dcm/DeviceConfigManager.h"
#include "trace/dcm/PropertyNames.h"
#include "trace/dcm/StmDeviceConfigManagerIF.h"

using namespace Zu::Wep::Trace;

namespace {

/// Accepts every object file as it is, and says which ones are not what was recorded.
class Events : public CDeviceConfigEvents {
  public:
    void OnUpdateObjectFile(const std::string& file, bool timeStampChanged, std::string& newFile) override {
        std::cout << (timeStampChanged ? "changed since it was recorded: " : "missing: ") << file << '\n';
        newFile = timeStampChanged ? file : "";
    }
};

/// The plug-in's two functions. It stays loaded to the end of the process.
struct Plugin {
    explicit Plugin(const char* path) {
        void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            throw std::runtime_error(dlerror());
        }
        create = reinterpret_cast<decltype(create)>(Symbol(library, "CreateDeviceConfigManager"));
        destroy = reinterpret_cast<decltype(destroy)>(Symbol(library, "DestroyDeviceConfigManager"));
        if (create == nullptr || destroy == nullptr) {
            throw std::runtime_error(std::string(path) + " is no configuration manager with the interface " +
                                     STMDCM_INTERFACE_VERSION);
        }
    }
    /// Of the interface that the headers describe: a library with another one would crash.
    static void* Symbol(void* library, const char* name) { return dlvsym(library, name, STMDCM_INTERFACE_VERSION); }

    decltype(&CreateDeviceConfigManager) create;
    decltype(&DestroyDeviceConfigManager) destroy;
};

int Number(CDeviceConfigManager& manager, const std::string& name) {
    ConfigPropertyValue value;
    if (!manager.GetProperty(name, value)) {
        throw std::runtime_error("no property " + name);
    }
    return value.type == ConfigPropertyValue::Boolean ? value.value.boolean : value.value.integer;
}

int Run(const char* pluginPath, const std::string& capture, const std::string& copy) {
    const Plugin plugin(pluginPath);
    CPUInfo cpu{"Core_0/Cluster", 0, 0, 0};
    Events events;
    const auto destroy = [&](CDeviceConfigManager* manager) { plugin.destroy(manager); };
    const std::unique_ptr<CDeviceConfigManager, decltype(destroy)> manager(
        static_cast<CDeviceConfigManager*>(plugin.create(&cpu, nullptr)), destroy);
    if (manager == nullptr) {
        throw std::runtime_error("the plug-in made no manager");
    }
    manager->RegisterEventHandler(&events);

    if (!manager->LoadConfiguration(capture, TRACE_DATA_FILE_TDF)) {
        throw std::runtime_error(capture + " holds no configuration");
    }
    std::cout << "ATB id " << Number(*manager, PropertyNames::STM_ATB_Id) << ", "
              << Number(*manager, PropertyNames::STM_DTC_target_pins) << " pins\n";

    // Setting properties and the use-case records are what StmDeviceConfigManagerIF adds; every manager is one.
    auto& stm = static_cast<StmDeviceConfigManagerIF&>(*manager);
    UsecaseRecordIF& record = *stm.GetUsecaseRecord();
    for (unsigned i = 0; i < record.GetNumUsecases(); ++i) {
        std::cout << "use case " << record.GetUsecase(i)->GetModuleName() << '\n';
    }
    ConfigPropertyValue pins(8);
    stm.SetSTMProperty(PropertyNames::STM_DTC_target_pins, pins);

    // The first configuration of a capture is the one that is read: a changed one needs a capture of its own.
    std::filesystem::copy_file(capture, copy);
    if (!manager->SaveConfiguration(copy, TRACE_DATA_FILE_TDF)) {
        throw std::runtime_error("can't save into " + copy);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return argc == 4 ? Run(argv[1], argv[2], argv[3]) : throw std::runtime_error("three file names, please");
    } catch (const std::exception& error) {
        std::cerr << "small_host: " << error.what() << '\n';
        return 1;
    }
}
