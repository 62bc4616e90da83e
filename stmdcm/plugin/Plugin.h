#pragma once

#include <filesystem>
#include <memory>

#include "host/CDeviceIdentifier.h"
#include "host/CPUInfo.h"
#include "trace/dcm/DeviceConfigManager.h"

namespace stmdcm {

class TraceHome;

/// The plug-in, loaded with the dynamic loader. Outlives everything that comes from it.
class Plugin {
  public:
    using CreateFunction = decltype(&CreateDeviceConfigManager);
    using DestroyFunction = decltype(&DestroyDeviceConfigManager);

    /// Loads `file`, or the program's own plug-in when it is empty; throws Failure when that can't be done. The home
    /// must be there first and stay as long as the plug-in.
    Plugin(const TraceHome& home, const std::filesystem::path& file);

    const std::filesystem::path& Path() const { return m_path; }
    CreateFunction Create() const { return m_create; }
    DestroyFunction Destroy() const { return m_destroy; }

    /// The address of an exported symbol; throws Failure when there is none.
    void* Symbol(const char* name) const;

  private:
    struct Unload {
        void operator()(void* library) const;
    };

    std::filesystem::path m_path;
    std::unique_ptr<void, Unload> m_library;
    CreateFunction m_create;
    DestroyFunction m_destroy;
};

}  // namespace stmdcm
