#pragma once

#include <dlfcn.h>

#include <functional>
#include <stdexcept>
#include <string>

#include "tests/support/KillAtSyscall.h"
#include "tests/support/ScratchDir.h"
#include "trace/dcm/DeviceConfigManager.h"
#include "trace/dcm/StmDeviceConfigManagerIF.h"
#include "trace/tdf/TDFHandler.h"

namespace stmdcm_test {

/// A host with the library that it loaded, real or checked.
struct Host {
    using Manager = Zu::Wep::Trace::StmDeviceConfigManagerIF;

    explicit Host(const char* path) : library(::dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        if (library == nullptr) {
            throw std::runtime_error(::dlerror());
        }
        create = reinterpret_cast<decltype(create)>(::dlsym(library, "CreateDeviceConfigManager"));
        destroy = reinterpret_cast<decltype(destroy)>(::dlsym(library, "DestroyDeviceConfigManager"));
    }
    Manager* Make(Zu::Wep::Trace::CDeviceIdentifier* identifier = nullptr) {
        return static_cast<Manager*>(static_cast<Zu::Wep::Trace::CDeviceConfigManager*>(create(&cpu, identifier)));
    }

    void* library;
    decltype(&CreateDeviceConfigManager) create = nullptr;
    decltype(&DestroyDeviceConfigManager) destroy = nullptr;
    Zu::Wep::Trace::CPUInfo cpu{"Core_0/Cluster", 11, 12, 13};
};

/// Runs a host in a process and a home of its own and unloads the library behind it; gives what the checker said.
class HostRun {
  public:
    explicit HostRun(const char* library) : m_library(library) {}

    std::string Run(const std::function<void(Host&)>& act) {
        const int status = RunInChild([&] {
            ::setenv("HOME", Home().c_str(), 1);
            ::setenv("STMDCM_CHECK_LOG", (m_root / "said").c_str(), 1);
            ::setenv("STMDCM_CHECK_TRACE", (m_root / "trace").c_str(), 1);
            Host host(m_library);
            act(host);
            return ::dlclose(host.library) != 0 || testing::Test::HasFailure() ? 1 : 0;
        });
        EXPECT_EQ(status, 0);
        return ReadWhole(m_root / "said");
    }
    std::string Home() const { return m_root.Path(); }
    std::string Trace() const { return ReadWhole(m_root / "trace"); }

  private:
    const char* m_library;
    ScratchDir m_root{MemoryDirectory()};
};

}  // namespace stmdcm_test
