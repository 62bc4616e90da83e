#pragma once

#include <string>
#include <vector>

#include "stmdcm/plugin/LiveConfiguration.h"
#include "stmdcm/reading/Comparison.h"

namespace stmdcm {

struct PluginSession;

/// What the live half of the demo saw.
struct LiveDemoResult {
    std::string scenario;
    LiveConfiguration live;
    std::string savedCapture;
    Configuration reloaded;               ///< what a second manager holds, without the target
    std::vector<Difference> differences;  ///< from the live configuration to `reloaded`
    std::vector<std::string> problems;    ///< whatever else is not as it should be

    bool Passed() const { return differences.empty() && problems.empty(); }
};

/// The road of a capture: load from a live target, save, lose the target, load the capture without it, compare.
class LiveDemoRun {
  public:
    /// Works in the session's home alone. The simulated factory must be the one that is found.
    explicit LiveDemoRun(PluginSession& session) : m_session(session) {}

    /// Throws Failure where the job can't go on.
    LiveDemoResult Run();

  private:
    void PlayTarget();
    void LoadAndSave();
    void LoseTarget();
    void Reload();

    PluginSession& m_session;
    LiveDemoResult m_result;
};

}  // namespace stmdcm
