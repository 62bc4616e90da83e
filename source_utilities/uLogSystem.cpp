#include "source_utilities/uLogSystem.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <utility>

#include "source_utilities/Log.h"
#include "source_utilities/uEnvironment.h"

namespace ZU_WEP {

uLogSystem* uLogSystem::m_pSystem = nullptr;

namespace {

struct LevelRow {
    int level;
    bool echo;
    bool debugger;
    std::int32_t stored;
};

constexpr LevelRow levelTable[] = {
    {1, false, false, 1}, {2, true, false, 1}, {3, false, false, 2},
    {4, true, false, 2},  {5, true, true, 2},  {6, true, true, 3},
};

std::int32_t LevelFrom(const char* variable) {
    const char* text = uEnvironment::GetVar(variable);
    return *text == '\0' ? 0 : static_cast<std::int32_t>(std::strtol(text, nullptr, 10));
}

void LogTraceDirectories(uLogger& logger) {
    std::string settings;
    std::string data;
    uEnvironment::GetTraceUserSettingsDirectory(settings);
    uEnvironment::GetTraceTemporaryDataDirectory(data);
    logger.Log(LogInformation, uLogger::TIME_STAMP, "Logger : trace user settings directory is %s", settings.c_str());
    logger.Log(LogInformation, uLogger::TIME_STAMP, "Logger : trace temporary data directory is %s", data.c_str());
}

}  // namespace

uLogSystem::~uLogSystem() {
    if (--m_initCount >= 1) {
        return;
    }
    delete m_logger;
    m_logger = nullptr;
    m_initCount = 0;
}

uLogSystem* uLogSystem::GetLogSystem() {
    if (m_pSystem == nullptr) {
        m_pSystem = new uLogSystem;
    }
    return m_pSystem;
}

void uLogSystem::End() noexcept {
    uLogSystem* const system = std::exchange(m_pSystem, nullptr);
    if (system == nullptr) {
        return;
    }
    for (const auto& [name, logger] : system->m_loggers) {
        if (logger != system->m_logger) {
            delete logger;
        }
    }
    system->m_initCount = 0;  // so that the destructor deletes the current one
    delete system;
}

bool uLogSystem::InitLog(const char* fileName, const char* levelVar, const char* dirVar, bool multiple) {
    if (fileName == nullptr || levelVar == nullptr) {
        return false;
    }
    m_multiple = multiple;
    if (multiple) {
        m_logger = LookupLogger(fileName);
    }
    if (m_logger != nullptr) {
        return true;
    }

    std::string path = dirVar == nullptr ? "" : uEnvironment::GetVar(dirVar);
    if (!path.empty()) {
        path += '/';
    }
    path += fileName;
    m_level = LevelFrom(levelVar);
    auto logger = std::make_unique<uLogger>(path.c_str(), true);
    if (multiple) {
        m_loggers.emplace(fileName, logger.get());
    }
    m_logger = logger.release();
    ++m_initCount;
    SetLoggingLevel(m_level);
    LogTraceDirectories(*m_logger);
    return true;
}

bool uLogSystem::InitLogEx(const char* fileName, int level, const char* directory) {
    if (fileName == nullptr) {
        return false;
    }
    if (m_logger != nullptr) {
        return true;
    }
    // An empty directory gives "/" and the name (uLogSystem.h).
    const std::string path = directory == nullptr ? fileName : std::string(directory) + "/" + fileName;
    m_level = level;
    m_logger = new uLogger(path.c_str(), true);
    SetLoggingLevel(level);
    return true;
}

void uLogSystem::SetLoggingLevel(int level) {
    if (m_logger == nullptr) {
        return;
    }
    const auto* row = std::find_if(std::begin(levelTable), std::end(levelTable),
                                   [level](const LevelRow& candidate) { return candidate.level == level; });
    const bool isKnown = row != std::end(levelTable);
    m_logger->EnableOutput(isKnown);
    if (!isKnown) {
        return;  // The stored level stays (docs/log.md).
    }
    if (row->echo) {
        m_logger->EnableLogToStdio(true);
    }
    if (row->debugger) {
        m_logger->EnableLogDbgOutWindow(true);
    }
    m_level = row->stored;
}

uLogger* uLogSystem::LookupLogger(const char* name) const {
    if (name == nullptr) {
        return nullptr;
    }
    const auto found = m_loggers.find(name);
    return found == m_loggers.end() ? nullptr : found->second;
}

}  // namespace ZU_WEP
