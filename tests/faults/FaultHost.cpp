// A host for the tests of faults: does one thing through the plug-in, twice, and prints what came of it each time.
// Usage: fault_host PLUGIN ACTION [once]

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

#include "trace/dcm/DeviceConfigManager.h"
#include "trace/dcm/StmDeviceConfigManager.h"

using namespace Zu::Wep::Trace;

namespace {

struct Events final : CDeviceConfigEvents {};

struct Identifier final : CDeviceIdentifier {
    bool SaveToFile(const std::string&, eTraceDataFileType) override { return true; }
    bool LoadFromFile(const std::string&, eTraceDataFileType) override { return true; }
};

using Create = decltype(&CreateDeviceConfigManager);
using Destroy = decltype(&DestroyDeviceConfigManager);

/// All of a manager's state that the actions change, in a line.
std::string StateOf(StmDeviceConfigManager& manager) {
    ConfigPropertyValue atb, pins;
    manager.GetProperty("STM_ATB_Id", atb);
    manager.GetProperty("STM_DTC_target_pins", pins);
    return " atb " + std::to_string(atb.value.integer) + " pins " + std::to_string(pins.value.integer) + " use cases " +
           std::to_string(manager.GetUsecaseRecord()->GetNumUsecases());
}

void SetAtb(StmDeviceConfigManager& manager) {
    ConfigPropertyValue value;
    value.value.integer = 55;
    manager.SetSTMProperty("STM_ATB_Id", value);
}

std::string Act(StmDeviceConfigManager& manager, const std::string& action) {
    const auto told = [](bool result) { return std::string(result ? "true" : "false"); };
    if (action == "load-capture") {
        return told(manager.LoadConfiguration("full.tdf", TRACE_DATA_FILE_TDF));
    }
    if (action == "load-settings") {
        return told(manager.LoadConfiguration("settings.txt", TRACE_DATA_FILE_LOCAL));
    }
    if (action == "load-live") {
        return told(manager.LoadConfigurationLive());
    }
    if (action == "save-capture") {
        const bool isLoaded = manager.LoadConfiguration("many.tdf", TRACE_DATA_FILE_TDF);
        SetAtb(manager);
        return told(isLoaded && manager.SaveConfiguration("bare.tdf", TRACE_DATA_FILE_TDF));
    }
    if (action == "save-settings") {
        SetAtb(manager);
        return told(manager.SaveConfiguration("mine", TRACE_DATA_FILE_LIVE));
    }
    if (action == "use-cases") {
        UsecaseRecord& record = *manager.GetUsecaseRecord();
        UsecaseInfoIF* usecase = record.GetAUsecaseInfo();
        usecase->SetModuleName("a module with a name that takes memory of its own");
        record.AddUsecase(usecase);
        return "done";
    }
    std::string path;
    return told(manager.GetObjectFile("core0", path)) + path;
}

/// One manager from its making to its end.
std::string Once(Create create, Destroy destroy, const std::string& action) {
    CPUInfo cpu{"Core_0/Cluster", 1, 0, 2};
    Events events;
    Identifier identifier;
    auto* manager = static_cast<StmDeviceConfigManager*>(static_cast<CDeviceConfigManager*>(create(&cpu, &identifier)));
    if (manager == nullptr) {
        return "no manager";
    }
    manager->RegisterEventHandler(&events);
    std::string result;
    try {
        result = Act(*manager, action);
    } catch (const std::bad_alloc&) {
        result = "bad_alloc";
    } catch (const std::exception& error) {
        result = error.what();
    }
    try {
        result += StateOf(*manager);
    } catch (const std::bad_alloc&) {
        result += " bad_alloc";
    }
    destroy(manager);
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    void* const library = ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", ::dlerror());
        return 3;
    }
    const auto create = reinterpret_cast<Create>(::dlsym(library, "CreateDeviceConfigManager"));
    const auto destroy = reinterpret_cast<Destroy>(::dlsym(library, "DestroyDeviceConfigManager"));
    ::fcntl(STDIN_FILENO, F_GETFD);  // the faults begin behind this
    for (int i = argc - 3; i < 2; ++i) {
        std::string result;
        try {
            result = Once(create, destroy, argv[2]);
        } catch (const std::bad_alloc&) {
            result = "bad_alloc";
        }
        if (::write(STDOUT_FILENO, result.data(), result.size()) < 0 || ::write(STDOUT_FILENO, "\n", 1) < 0) {
            return 4;
        }
    }
}
