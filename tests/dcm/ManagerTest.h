#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "source_utilities/uLogSystem.h"
#include "source_utilities/uLogger.h"
#include "tests/support/ScratchDir.h"
#include "trace/dcm/StmDeviceConfigManager.h"

namespace Zu::Wep::Trace {

using stmdcm_test::ReadWhole;
using stmdcm_test::ScratchDir;
using stmdcm_test::WriteWhole;

inline std::string Sample(const std::string& name) { return STMDCM_TEST_DATA "/" + name; }

/// A manager with directories and a log of its own.
class ManagerTest : public testing::Test {
  protected:
    ManagerTest() {
        ::setenv("HOME", m_home.Path().c_str(), 1);
        ::setenv("ZU_TRACE_SETTINGS_DIR", m_home.Path().c_str(), 1);
        m_manager = Make();
        ::setenv("ZU_TRACE_SETTINGS_DIR", m_home.Path().c_str(), 1);  // the first manager of a process exports its own
        StartLog(1);
    }
    ~ManagerTest() override { ResetLog(); }

    std::unique_ptr<StmDeviceConfigManager> Make() { return std::make_unique<StmDeviceConfigManager>(&m_cpu, nullptr); }

    void ResetLog() {
        ZU_WEP::uLogSystem* system = ZU_WEP::uLogSystem::m_pSystem;
        if (system != nullptr && system->GetLogger() != m_logger) {
            delete m_logger;  // a manager made meanwhile has put its own in its place
        }
        delete system;
        ZU_WEP::uLogSystem::m_pSystem = nullptr;
        m_logger = nullptr;
    }
    void StartLog(int level) {
        ResetLog();
        ZU_WEP::uLogSystem::GetLogSystem()->InitLogEx("log.txt", level, m_home.Path().c_str());
        m_logger = ZU_WEP::uLogSystem::GetLogSystem()->GetLogger();
    }
    /// The log so far, each line without its time; empties it.
    std::vector<std::string> TakeLog() {
        std::vector<std::string> lines;
        std::istringstream log(ReadWhole(m_home / "log.txt"));
        for (std::string line; std::getline(log, line);) {
            lines.push_back(line.substr(0, 6) + line.substr(line.find("| ") + 2));
        }
        ResetLog();
        WriteWhole(m_home / "log.txt", "");
        StartLog(1);
        return lines;
    }

    std::string Write(const std::string& name, const std::string& content) {
        WriteWhole(m_home / name, content);
        return m_home / name;
    }
    bool LoadText(const std::string& text) {
        return m_manager->LoadConfiguration(Write("local.txt", text), TRACE_DATA_FILE_LOCAL);
    }
    bool Load(const std::string& path) { return m_manager->LoadConfiguration(path, TRACE_DATA_FILE_TDF); }
    std::string Copy(const std::string& sample) { return Write("copy.tdf", ReadWhole(Sample(sample))); }

    /// The value as the settings text shows it.
    static int Number(StmDeviceConfigManager& manager, const std::string& name) {
        ConfigPropertyValue value;
        EXPECT_TRUE(manager.GetProperty(name, value)) << name;
        return value.type == ConfigPropertyValue::Boolean ? value.value.boolean : value.value.integer;
    }
    int Number(const std::string& name) { return Number(*m_manager, name); }

    /// The whole configuration but the object files.
    static std::string Text(StmDeviceConfigManager& manager) {
        std::string text;
        manager.OutputParametersToBuffer(text);
        manager.GetUsecaseRecord()->SaveAllRecords(text);
        manager.GetCTUsecaseRecord()->SaveAllRecords(text);
        manager.GetPMIUsecaseRecord()->SaveAllRecords(text);
        return text;
    }
    std::string Text() { return Text(*m_manager); }
    std::vector<unsigned> UseCases() {
        return {m_manager->GetUsecaseRecord()->GetNumUsecases(), m_manager->GetCTUsecaseRecord()->GetNumUsecases(),
                m_manager->GetPMIUsecaseRecord()->GetNumUsecases()};
    }

    ScratchDir m_home{stmdcm_test::MemoryDirectory()};
    CPUInfo m_cpu{"Core_0/Cluster", 1, 0, 2};
    std::unique_ptr<StmDeviceConfigManager> m_manager;
    ZU_WEP::uLogger* m_logger = nullptr;
};

}  // namespace Zu::Wep::Trace
