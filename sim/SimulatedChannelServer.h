#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/CChannelServer.h"
#include "sim/Scenario.h"
#include "sim/SimulatedChannelDriver.h"

namespace stmdcm_sim {

/// Knows the CPUs of a scenario. A name that is none of theirs is a vornError.
class SimulatedChannelServer final : public Zu::Wep::Trace::CChannelServer {
  public:
    /// Borrows it.
    explicit SimulatedChannelServer(Scenario& scenario);

    void GetObjectFile(const std::string& cpu, std::string& objectFile) override;
    void GetChannelDriver(const std::string& cpu, Zu::Wep::Trace::CChannelDriver*& driver) override;
    void ListCPUs(std::vector<std::string>& cpus) override;

  private:
    /// Plays a call about one CPU. `work` gets the CPU's index.
    void PlayFor(const char* operation, const std::string& cpu, Failure ScenarioCpu::*failure,
                 const std::function<std::string(std::size_t)>& work);

    Scenario* m_scenario;
    std::vector<SimulatedChannelDriver> m_drivers;  ///< one for each CPU, in the same order
};

}  // namespace stmdcm_sim
