#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "source_utilities/uLogger.h"

namespace ZU_WEP {

/// The one logging state of a process: the current logger and the level. Set up once, before a second thread logs;
/// nothing here is locked. Levels and environment variables are described in docs/log.md.
class uLogSystem {
  public:
    uLogSystem() = default;
    /// Undoes one `InitLog`; with the last one the current logger is deleted.
    ~uLogSystem();
    uLogSystem(const uLogSystem&) = delete;
    uLogSystem& operator=(const uLogSystem&) = delete;

    /// Creates the instance on first use.
    static uLogSystem* GetLogSystem();
    /// Deletes the instance and every logger: for a library that is unloaded. The next use creates a new one.
    static void End() noexcept;

    /// Installs a logger that appends to `fileName`, in the directory that the variable `dirVar` names when it is given
    /// and set, at the level in the variable `levelVar`. With `multiple` there is one logger per `fileName`. True and
    /// nothing done when there is a logger already; false when `fileName` or `levelVar` is null.
    /// Throws `source_utilities_error` without "HOME"; logger and level are in force even then.
    bool InitLog(const char* fileName, const char* levelVar, const char* dirVar, bool multiple);

    /// The same with given values, for "`directory`/`fileName`" or, with a null `directory`, for `fileName`.
    bool InitLogEx(const char* fileName, int level, const char* directory);

    /// 1 to 6; anything else switches output off and keeps the level as it is. Does nothing without a logger.
    void SetLoggingLevel(int level);
    /// Above 0 is the condition for any line to be written.
    int GetLoggingLevel() const { return m_level; }

    /// Both borrowed from this object, null when there is none.
    uLogger* GetLogger() const { return m_logger; }
    uLogger* LookupLogger(const char* name) const;

    static uLogSystem* m_pSystem;

  private:
    uLogger* m_logger = nullptr;
    std::int32_t m_level = 0;
    bool m_multiple = false;
    std::int32_t m_initCount = 0;
    std::map<std::string, uLogger*> m_loggers;
};

}  // namespace ZU_WEP
