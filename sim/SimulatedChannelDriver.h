#pragma once

#include "host/CChannelDriver.h"
#include "sim/Scenario.h"

namespace stmdcm_sim {

/// Answers with the attributes of one CPU. An attribute that the scenario does not name is a vornError.
class SimulatedChannelDriver final : public Zu::Wep::Trace::CChannelDriver {
  public:
    /// Borrows both; the texts it answers with live as long as `cpu`.
    SimulatedChannelDriver(const Scenario& scenario, ScenarioCpu& cpu) : m_scenario(&scenario), m_cpu(&cpu) {}

    void GetAttribute(const char* name, Zu::Wep::Trace::ChannelAttribute& value) override;

  private:
    const Scenario* m_scenario;
    ScenarioCpu* m_cpu;
};

}  // namespace stmdcm_sim
