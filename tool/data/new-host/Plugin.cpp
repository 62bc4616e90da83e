#include "Plugin.h"

#include <dlfcn.h>

#include <stdexcept>

namespace {

void* Load(const std::string& file) {
    void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        // With LD_DEBUG=libs in its environment the host shows which libraries the loader found on the way.
        throw std::runtime_error(std::string("the plug-in can't be loaded: ") + dlerror());
    }
    return library;
}

/// The version keeps a library with another interface from being called.
template <class Function>
Function Symbol(const std::string& file, void* library, const char* name) {
    void* symbol = dlvsym(library, name, STMDCM_INTERFACE_VERSION);
    if (symbol == nullptr) {
        throw std::runtime_error(file + " has no " + name + " of the interface " STMDCM_INTERFACE_VERSION);
    }
    return reinterpret_cast<Function>(symbol);
}

}  // namespace

Plugin::Plugin(const std::string& file) {
    void* library = Load(file);
    m_create = Symbol<decltype(m_create)>(file, library, "CreateDeviceConfigManager");
    m_destroy = Symbol<Destroy>(file, library, "DestroyDeviceConfigManager");
}

std::unique_ptr<Plugin::Manager, Plugin::Destroy> Plugin::MakeManager(Zu::Wep::Trace::CPUInfo& cpu) const {
    // What is created is a CDeviceConfigManager, and in truth always what adds the settings of an STM to that.
    auto* manager = static_cast<Zu::Wep::Trace::CDeviceConfigManager*>(m_create(&cpu, nullptr));
    if (manager == nullptr) {
        throw std::runtime_error("the plug-in made no manager");
    }
    return {static_cast<Manager*>(manager), m_destroy};
}
