#pragma once

#include "host/vorn/vornError.h"
#include "tests/dcm/ManagerTest.h"

namespace Zu::Wep::Trace {

using Lines = std::vector<std::string>;

inline constexpr char kLoading[] = "M     DCM: Loading factory DLL - TraceFactory ";
inline constexpr char kCreating[] = "M     STM DCM: Creating Trace factory";
inline constexpr char kServerDone[] = "M     stm DCM: Done -creating/Connecting Channel Server ";
inline const Lines kConnected{kLoading, kCreating, kServerDone};

/// A manager on a simulated target.
class LiveTest : public ManagerTest {
  protected:
    struct Manager : StmDeviceConfigManager {
        using StmDeviceConfigManager::m_objectFileNames;
        using StmDeviceConfigManager::m_objectFiles;
        using StmDeviceConfigManager::m_refreshObjectFiles;
        using StmDeviceConfigManager::StmDeviceConfigManager;
    };

    LiveTest() {
        ::setenv("STMDCM_SCENARIO", (m_home / "target.json").c_str(), 1);
        ::setenv("STMDCM_SCENARIO_LOG", (m_home / "calls.txt").c_str(), 1);
        Renew();
    }
    ~LiveTest() override { m_live.reset(); }

    void Renew() {
        m_live = std::make_unique<Manager>(&m_cpu, nullptr);
        StartLog(1);
        TakeLog();
    }
    /// The target's one CPU is the manager's.
    void PlayAttributes(const std::string& attributes, const std::string& more = "") {
        Play(R"({"name": "Core_0/Cluster", "attributes": {)" + attributes + "}}", more);
    }
    void Play(const std::string& cpus, const std::string& more = "") {
        Write("target.json", "{" + more + "\"cpus\": [" + cpus + "]}");
    }
    int Get(const std::string& property) { return Number(*m_live, property); }
    /// The log so far, without the lines of the settings file and of the library loader.
    Lines TakeLiveLog() {
        Lines lines = TakeLog();
        std::erase_if(lines, [](const std::string& line) {
            return line.find("STM Device DCM:") != std::string::npos || line.find("uDll:") != std::string::npos;
        });
        return lines;
    }
    std::string Calls() { return ReadWhole(m_home / "calls.txt"); }

    std::unique_ptr<Manager> m_live;
};

}  // namespace Zu::Wep::Trace
