#pragma once

#include <string>

#include "host/eTraceDataFileType.h"
#include "trace/dcm/CDeviceConfigEvents.h"
#include "trace/dcm/ConfigPropertyValue.h"

namespace Zu::Wep::Trace {

/// What a host sees of a manager: the configuration of one CPU's trace.
/// Made by CreateDeviceConfigManager, ended by DestroyDeviceConfigManager (trace/dcm/DeviceConfigManager.h), never
/// deleted by the host. Managers start no thread and lock nothing: create, use and destroy them on one thread at a
/// time. The order of the operations is part of the binary interface.
class CDeviceConfigManager {
  public:
    virtual ~CDeviceConfigManager() = default;

    /// Borrows `handler` until another or null is registered, or the manager ends.
    virtual void RegisterEventHandler(CDeviceConfigEvents* handler) = 0;

    /// Gives the CPU's two numbers and its name. Always true.
    virtual bool GetInfo(int& deviceId, int& cpuId, std::string& name) = 0;

    /// Loads the settings file and then the live target. False when there is no live system to connect to.
    /// Throws std::logic_error when ZU_TRACE_SETTINGS_DIR is unset or empty.
    virtual bool LoadConfigurationLive() = 0;

    /// Loads a capture, or a settings file. False when it could not be loaded, or not to its end: what was read
    /// until then stays in force. A settings text that ends with a line feed loads whole and still gives false when
    /// nothing but properties and one-line use cases is in it. TRACE_DATA_FILE_LIVE throws std::logic_error when
    /// ZU_TRACE_SETTINGS_DIR is unset or empty.
    virtual bool LoadConfiguration(const std::string& fileName, eTraceDataFileType type) = 0;

    /// Appends the configuration to a capture, which must exist, or replaces a settings file. A file that can't be
    /// opened for writing is no failure of the latter. Settings files throw std::logic_error when
    /// ZU_TRACE_SETTINGS_DIR is unset or empty.
    virtual bool SaveConfiguration(const std::string& fileName, eTraceDataFileType type) = 0;

    /// Reads the property `name`; false, with `value` unchanged, when there is none.
    virtual bool GetProperty(const std::string& name, ConfigPropertyValue& value) = 0;

    /// Gives the path of the object file known under `name`, else under a name like it, else what the host answers.
    virtual bool GetObjectFile(const std::string& name, std::string& objectFile) = 0;

    /// Always empty: failures are told by results and in the log (docs/log.md).
    virtual std::string GetLastError() const = 0;
};

}  // namespace Zu::Wep::Trace
