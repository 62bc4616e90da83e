// What the checker exports of the managers, and its coming and going (docs/host-checker.md).

#include <cstdlib>

#include "host/check/Kept.h"
#include "host/check/ManagerProxy.h"
#include "host/check/RealLibrary.h"

namespace stmdcm_check {

namespace {

bool isProcessEnding = false;

/// The order makes the difference: at the end of the process this comes before the library's end, when the host unloads
/// the library behind it.
void NoteProcessEnd() { isProcessEnding = true; }

__attribute__((constructor)) void Begin() {
    RealLibrary::Load();
    std::atexit(NoteProcessEnd);
}

__attribute__((destructor)) void End() {
    const std::string when = isProcessEnding ? "at the end of the process" : "when the library is unloaded";
    ScUsecaseProxy::TellWrittenTooLate(when);
    const std::size_t alive = ManagerProxy::TellAlive(when);
    Trace("end", JsonObject().Add("when", when).Add("managers_alive", alive));
    if (!isProcessEnding && alive == 0) {
        FreeKept();
        RealLibrary::Unload();
    }
}

}  // namespace

}  // namespace stmdcm_check

using stmdcm_check::HostCall;

void* CreateDeviceConfigManager(Zu::Wep::Trace::CPUInfo* cpu, Zu::Wep::Trace::CDeviceIdentifier* id) {
    stmdcm_check::JsonObject arguments;
    arguments.AddJson("cpu", "null");
    if (cpu != nullptr) {
        arguments = stmdcm_check::JsonObject()
                        .Add("name", cpu->name)
                        .Add("deviceId", cpu->deviceId)
                        .Add("cpuId", cpu->cpuId)
                        .Add("hasIdentifier", id != nullptr);
    }
    HostCall call("CreateDeviceConfigManager", "", arguments);
    const std::string fault = stmdcm_check::FaultOf(cpu);
    if (!fault.empty()) {
        call.Tell(fault);
    }
    return call.Run([&]() -> Zu::Wep::Trace::CDeviceConfigManager* {
        return cpu != nullptr && stmdcm_check::RealLibrary::Create() != nullptr
                   ? stmdcm_check::ManagerProxy::Make(call, cpu, id)
                   : nullptr;
    });
}

void DestroyDeviceConfigManager(Zu::Wep::Trace::CDeviceConfigManager* manager) {
    HostCall call("DestroyDeviceConfigManager", "", stmdcm_check::JsonObject().Add("isNull", manager == nullptr));
    if (manager != nullptr) {
        stmdcm_check::ManagerProxy::Destroy(call, manager);
    } else {
        call.Run([] {});
    }
}
