#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "stmdcm/plugin/LiveConfiguration.h"
#include "stmdcm/plugin/ObjectFileQuestions.h"
#include "stmdcm/plugin/PluginSession.h"
#include "stmdcm/reading/Comparison.h"

namespace stmdcm {

class Manager;

/// What came back in either half of the demo.
struct DemoOutcome {
    std::string savedCapture;
    Configuration reloaded;               ///< what the second manager holds
    std::vector<Difference> differences;  ///< from what the first one held when it saved to `reloaded`
    std::vector<std::string> problems;    ///< whatever else is not as it should be

    bool Passed() const { return differences.empty() && problems.empty(); }
};

/// What the demo saw.
struct DemoResult : DemoOutcome {
    std::string cpu;
    std::string plugin;
    std::string capture;                        ///< the one that was loaded
    std::vector<ObjectFile> recorded;           ///< its object files, before anybody was asked
    std::vector<ObjectFileQuestion> questions;  ///< of the first manager
    Configuration loaded;
    Configuration changed;            ///< what the first manager held when it saved
    std::vector<Difference> changes;  ///< from `loaded` to `changed`
};

/// What the live half saw.
struct LiveDemoResult : DemoOutcome {
    std::string scenario;
    LiveConfiguration live;
};

// Both work in the session's home alone, and throw Failure where the job can't go on.

/// The main job: load a capture, answer the manager's questions, change and add, save into another capture, load that
/// into a second manager, compare.
DemoResult RunDemo(PluginSession& session);

/// The road of a capture: load from a live target, save, lose the target, load the capture without it, compare. The
/// simulated factory must be the one that is found.
LiveDemoResult RunLiveDemo(PluginSession& session);

inline constexpr char kDemoCpu[] = "Core_0/Cluster";  // The "/" must not reach a file name.

/// A program image as a backup brings it back: with the modification time that it had. Throws Failure.
void WriteDemoImage(const std::filesystem::path& path, std::int64_t modified);

/// Loads the saved capture into a second manager. The object files are those that the capture records.
void Reload(PluginSession& session, Manager& manager, DemoOutcome& outcome);

}  // namespace stmdcm
