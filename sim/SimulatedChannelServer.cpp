#include "sim/SimulatedChannelServer.h"

#include <algorithm>

#include "host/vorn/vornError.h"
#include "sim/CallLog.h"
#include "sim/Play.h"

namespace stmdcm_sim {

using Zu::Wep::Trace::CChannelDriver;
using Zu::Wep::Vorn::vornError;

SimulatedChannelServer::SimulatedChannelServer(Scenario& scenario) : m_scenario(&scenario) {
    for (ScenarioCpu& cpu : scenario.cpus) {
        m_drivers.emplace_back(scenario, cpu);
    }
}

void SimulatedChannelServer::PlayFor(const char* operation, const std::string& cpu, Failure ScenarioCpu::*failure,
                                     const std::function<std::string(std::size_t)>& work) {
    std::vector<ScenarioCpu>& cpus = m_scenario->cpus;
    const auto found =
        std::find_if(cpus.begin(), cpus.end(), [&cpu](const ScenarioCpu& candidate) { return candidate.name == cpu; });
    Failure none;
    Play(m_scenario->delay, std::string(operation) + " " + CallLog::Quoted(cpu),
         found != cpus.end() ? (*found).*failure : none, [&] {
             if (found == cpus.end()) {
                 throw vornError("the target has no CPU \"" + cpu + "\"", vornError::Severity_Error);
             }
             return work(static_cast<std::size_t>(found - cpus.begin()));
         });
}

void SimulatedChannelServer::GetObjectFile(const std::string& cpu, std::string& objectFile) {
    PlayFor("GetObjectFile", cpu, &ScenarioCpu::objectFileFailure, [&](std::size_t index) {
        Sequence<std::string>& paths = m_scenario->cpus[index].objectFiles;
        objectFile = paths.IsEmpty() ? "" : paths.Next();
        return " gives " + CallLog::Quoted(objectFile);
    });
}

void SimulatedChannelServer::GetChannelDriver(const std::string& cpu, CChannelDriver*& driver) {
    PlayFor("GetChannelDriver", cpu, &ScenarioCpu::driverFailure, [&](std::size_t index) {
        driver = &m_drivers[index];
        return std::string();
    });
}

void SimulatedChannelServer::ListCPUs(std::vector<std::string>& cpus) {
    Play(m_scenario->delay, "ListCPUs", m_scenario->listFailure, [&] {
        cpus.clear();
        std::string told = " gives";
        if (m_scenario->lists.IsEmpty()) {
            for (const ScenarioCpu& cpu : m_scenario->cpus) {
                cpus.push_back(cpu.name);
            }
        } else {
            cpus = m_scenario->lists.Next();
        }
        for (const std::string& cpu : cpus) {
            (told += ' ') += CallLog::Quoted(cpu);
        }
        return cpus.empty() ? " gives nothing" : told;
    });
}

}  // namespace stmdcm_sim
