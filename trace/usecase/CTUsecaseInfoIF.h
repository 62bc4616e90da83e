#pragma once

#include "trace/usecase/UsecaseInfoIFBase.h"
#include "trace/usecase/eCTDataOption.h"

namespace Zu::Wep::Trace {

/// A CP-tracer (CPT) use case. The operations take slots 10 to 17 of the table, the destructor follows.
class CTUsecaseInfoIF : public UsecaseInfoIFBase {
  public:
    virtual void SetDataOptions(eCTDataOption option, bool enable) = 0;
    virtual bool IsOptionEnabled(eCTDataOption option) const = 0;
    virtual void SetClockRate(unsigned int rate) = 0;
    virtual unsigned int GetClockRate() const = 0;
    virtual void SetDividFactor(unsigned int factor) = 0;  // Hosts know it by this name.
    virtual unsigned int GetDividFactor() const = 0;
    virtual void SetModuleMode(unsigned int mode) = 0;
    virtual unsigned int GetModuleMode() const = 0;
    virtual ~CTUsecaseInfoIF() = default;

  protected:
    CTUsecaseInfoIF() = default;
    CTUsecaseInfoIF(const CTUsecaseInfoIF&) = default;
    CTUsecaseInfoIF& operator=(const CTUsecaseInfoIF&) = default;
};

}  // namespace Zu::Wep::Trace
