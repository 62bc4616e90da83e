#pragma once

#include <string>

namespace Zu::Wep::Trace {

/// Prepares what all managers of a process share: the debug-client identifier, the three trace directories, the
/// environment variables that publish them, and the log (docs/log.md).
/// Each kind of manager keeps one instance for the life of the process. Not locked.
class TraceEnvironment {
  public:
    /// Sets the environment up unless that has succeeded before, then initialises logging. Throws nothing: a failure
    /// leaves the rest undone, and the next manager tries again.
    void Prepare() noexcept;

    /// Managers of this process that live, or begin to: each tells when it begins and when it ends. While there is one,
    /// the log stays when the process, or the host's last use of the library, ends.
    static void ManagerBegins() noexcept;
    static void ManagerEnds() noexcept;

  private:
    void SetUp();
    void FindDebugClient();
    void MakeDirectories();
    void NameLogFile();

    bool m_done = false;
    std::string m_debugClient;
    std::string m_loggingDirectory;
    std::string m_dataDirectory;
    std::string m_settingsDirectory;
    std::string m_logFileName;
};

}  // namespace Zu::Wep::Trace
