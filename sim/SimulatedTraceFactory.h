#pragma once

#include <memory>
#include <vector>

#include "host/CTraceFactory.h"
#include "sim/Scenario.h"
#include "sim/SimulatedChannelServer.h"

namespace stmdcm_sim {

/// Hands out channel servers of one target, each to be given back before the factory.
class SimulatedTraceFactory final : public Zu::Wep::Trace::CTraceFactory {
  public:
    explicit SimulatedTraceFactory(std::unique_ptr<Scenario> scenario) : m_scenario(std::move(scenario)) {}

    /// Any `mode` will do.
    void CreateChannelServer(Zu::Wep::Trace::CChannelServer*& server, int mode) override;
    void DestroyChannelServer(Zu::Wep::Trace::CChannelServer* server, int mode) override;

    /// Of the servers handed out, how many were not given back.
    std::size_t ServersLeft() const { return m_servers.size(); }

  private:
    std::unique_ptr<Scenario> m_scenario;
    std::vector<std::unique_ptr<SimulatedChannelServer>> m_servers;
};

}  // namespace stmdcm_sim
