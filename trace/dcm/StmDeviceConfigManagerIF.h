#pragma once

#include <string>

#include "trace/dcm/CDeviceConfigManager.h"
#include "trace/usecase/CTUsecaseRecordIF.h"
#include "trace/usecase/PMIUsecaseRecordIF.h"
#include "trace/usecase/UsecaseRecordIF.h"

namespace Zu::Wep::Trace {

/// What a host sees of an STM's manager beyond CDeviceConfigManager. Every manager that CreateDeviceConfigManager gives
/// is one: static_cast to it. The bodies are those of a manager without an STM, which this library makes none of; they
/// are here so that a host links with nothing but the dynamic loader. The order of the operations is part of the binary
/// interface.
class StmDeviceConfigManagerIF : public CDeviceConfigManager {
  public:
    /// Changes the property `name`; false when there is none, or when it is "CycleModeDelta".
    virtual bool SetSTMProperty(const std::string& /*name*/, ConfigPropertyValue& /*value*/) { return false; }

    /// Saves into the CPU's settings file. Throws std::logic_error when ZU_TRACE_SETTINGS_DIR is unset or empty.
    virtual void SaveAllConfiguration() {}

    /// Empties the records and loads the CPU's settings file, unless a TRACE_DATA_FILE_LOCAL has been loaded before.
    virtual void RetrieveAllConfiguration() {}

    /// The records belong to the manager and end with it; read and change them, never delete them.
    virtual UsecaseRecordIF* GetUsecaseRecord() { return nullptr; }
    virtual CTUsecaseRecordIF* GetCTUsecaseRecord() { return nullptr; }
    virtual PMIUsecaseRecordIF* GetPMIUsecaseRecord() { return nullptr; }
};

}  // namespace Zu::Wep::Trace
