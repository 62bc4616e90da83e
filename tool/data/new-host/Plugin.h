#pragma once

#include <memory>
#include <string>

#include "trace/dcm/DeviceConfigManager.h"
#include "trace/dcm/StmDeviceConfigManagerIF.h"

/// The plug-in. It stays loaded to the end of the process: no manager may outlive it.
class Plugin {
  public:
    using Manager = Zu::Wep::Trace::StmDeviceConfigManagerIF;
    using Destroy = void (*)(Zu::Wep::Trace::CDeviceConfigManager*);

    /// Throws std::runtime_error: the file can't be loaded, or has another interface than the headers of this build.
    explicit Plugin(const std::string& file);

    /// `cpu` and its name must live as long as the manager, and so must what is registered with that.
    std::unique_ptr<Manager, Destroy> MakeManager(Zu::Wep::Trace::CPUInfo& cpu) const;

  private:
    decltype(&CreateDeviceConfigManager) m_create;
    Destroy m_destroy;
};
