#pragma once

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// What every use case offers: ten operations, called through slots 0 to 9 of its table, in this order.
///
/// Each kind puts its own operations right behind these and its virtual destructor last, so the destructor here takes
/// no slot and nobody deletes through this class. Text arguments are C strings, never null, and are copied. Text
/// results stay valid until the use case is changed or destroyed. Not locked: one thread at a time.
class UsecaseInfoIFBase {
  public:
    virtual void SetModuleId(unsigned int id) = 0;
    virtual unsigned int GetModuleId() const = 0;
    virtual void SetModuleName(const char* name) = 0;
    virtual const char* GetModuleName() const = 0;
    virtual void SetProbeName(const char* name) = 0;
    /// Null for a PMI/CMI use case, which has no probe.
    virtual const char* GetProbeName() const = 0;
    virtual void SetSampleWindow(unsigned int window) = 0;
    virtual unsigned int GetSampleWindow() const = 0;
    /// The job the use case runs as; negative: none assigned.
    virtual void SetJobNum(int job) = 0;
    virtual int GetJobNum() const = 0;

  protected:
    UsecaseInfoIFBase() = default;
    UsecaseInfoIFBase(const UsecaseInfoIFBase&) = default;
    UsecaseInfoIFBase& operator=(const UsecaseInfoIFBase&) = default;
    ~UsecaseInfoIFBase() = default;
};

}  // namespace Zu::Wep::Trace
