#include "sim/SimulatedTraceFactory.h"

#include "host/vorn/vornError.h"
#include "sim/Play.h"

namespace stmdcm_sim {

using Zu::Wep::Trace::CChannelServer;
using Zu::Wep::Vorn::vornError;

void SimulatedTraceFactory::CreateChannelServer(CChannelServer*& server, int mode) {
    Play(m_scenario->delay, "CreateChannelServer " + std::to_string(mode), m_scenario->serverFailure, [&] {
        m_servers.push_back(std::make_unique<SimulatedChannelServer>(*m_scenario));
        server = m_servers.back().get();
        return std::string();
    });
}

void SimulatedTraceFactory::DestroyChannelServer(CChannelServer* server, int mode) {
    Play(m_scenario->delay, "DestroyChannelServer " + std::to_string(mode), m_scenario->serverEndFailure, [&] {
        if (std::erase_if(m_servers, [server](const auto& own) { return own.get() == server; }) == 0) {
            throw vornError("not a channel server of this factory", vornError::Severity_Error);
        }
        return std::string();
    });
}

}  // namespace stmdcm_sim
