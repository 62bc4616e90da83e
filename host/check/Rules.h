#pragma once

#include <string>

#include "host/CPUInfo.h"
#include "host/eTraceDataFileType.h"
#include "trace/dcm/ConfigPropertyValue.h"

namespace stmdcm_check {

// What is wrong with arguments that the library takes all the same: sentences, empty for nothing.

/// A value for a property, which is taken from the union whatever the type says (trace/dcm/ConfigPropertyValue.h).
std::string FaultOf(const std::string& property, const Zu::Wep::Trace::ConfigPropertyValue& value);
std::string FaultOf(const Zu::Wep::Trace::CPUInfo* cpu);
std::string FaultOf(Zu::Wep::Trace::eTraceDataFileType type);

/// A CPU as it was when a manager was made for it, which the host keeps for the manager's life.
class CpuAsMade {
  public:
    explicit CpuAsMade(const Zu::Wep::Trace::CPUInfo* cpu);
    /// Whether the host has changed, or lost, it. Looks where the library does for `GetInfo`.
    std::string Fault() const;

  private:
    const Zu::Wep::Trace::CPUInfo* m_cpu;
    Zu::Wep::Trace::CPUInfo m_copy;
    std::string m_name;
};

}  // namespace stmdcm_check
