#pragma once

#include "trace/usecase/CounterLineInfo.h"
#include "trace/usecase/FormulaInfo.h"
#include "trace/usecase/UsecaseInfoIFBase.h"

namespace Zu::Wep::Trace {

/// A statistics-counter (SC) use case. The operations take slots 10 to 17 of the table, the destructor follows.
class UsecaseInfoIF : public UsecaseInfoIFBase {
  public:
    virtual void SetSuppress(bool suppress) = 0;
    virtual bool GetSuppress() const = 0;
    /// Appends a copy; `counter` must not be null. Counters with the same number are all kept.
    virtual void AddCounter(const _CounterLineInfo* counter) = 0;
    /// Appends a formula; the texts must not be null.
    virtual void AddFormula(const char* name, const char* formula, const char* unit, unsigned int ofmask) = 0;
    virtual unsigned int GetNumCounters() const = 0;
    virtual unsigned int GetNumFormulars() const = 0;  // Hosts know it by this name.
    /// The counter or formula at a position counted from 0, null behind the last one. It belongs to the use case and
    /// is valid until a counter (formula) is added or the use case is reset or destroyed.
    virtual _CounterLineInfo* GetCounterInfo(unsigned int index) = 0;
    virtual FormulaInfo* GetFormula(unsigned int index) = 0;
    virtual ~UsecaseInfoIF() = default;

  protected:
    UsecaseInfoIF() = default;
    UsecaseInfoIF(const UsecaseInfoIF&) = default;
    UsecaseInfoIF& operator=(const UsecaseInfoIF&) = default;
};

}  // namespace Zu::Wep::Trace
