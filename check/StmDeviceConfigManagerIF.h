#pragma once

#include <string>

#include "trace/dcm/CDeviceConfigManager.h"
#include "trace/usecase/CTUsecaseRecordIF.h"
#include "trace/usecase/PMIUsecaseRecordIF.h"
#include "trace/usecase/UsecaseRecordIF.h"

namespace Zu::Wep::Trace {

/// The table of StmDeviceConfigManager without its data.
class StmDeviceConfigManagerIF : public CDeviceConfigManager {
  public:
    virtual bool SetSTMProperty(const std::string& name, ConfigPropertyValue& value) = 0;
    virtual void SaveAllConfiguration() = 0;
    virtual void RetrieveAllConfiguration() = 0;
    virtual UsecaseRecordIF* GetUsecaseRecord() = 0;
    virtual CTUsecaseRecordIF* GetCTUsecaseRecord() = 0;
    virtual PMIUsecaseRecordIF* GetPMIUsecaseRecord() = 0;
};

}  // namespace Zu::Wep::Trace
