#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "stmdcm/plugin/ObjectFileQuestions.h"
#include "stmdcm/plugin/TraceDataFile.h"
#include "stmdcm/reading/Comparison.h"
#include "stmdcm/reading/Configuration.h"

namespace stmdcm {

class Manager;
class Plugin;

/// What the demo saw.
struct DemoResult {
    std::string cpu;
    std::string plugin;
    std::string capture;                        ///< the one that was loaded
    std::vector<ObjectFile> recorded;           ///< its object files, before anybody was asked
    std::vector<ObjectFileQuestion> questions;  ///< of the first manager
    Configuration loaded;
    Configuration changed;            ///< what the first manager held when it saved
    std::vector<Difference> changes;  ///< from `loaded` to `changed`
    std::string savedCapture;
    Configuration reloaded;               ///< what the second manager holds
    std::vector<Difference> differences;  ///< from `changed` to `reloaded`
    std::vector<std::string> problems;    ///< whatever else is not as it should be

    bool Passed() const { return differences.empty() && problems.empty(); }
};

/// The main job: load a capture, answer the manager's questions, change and add, save into another capture, load that
/// into a second manager, compare.
class DemoRun {
  public:
    /// Works in `directory` alone.
    DemoRun(const Plugin& plugin, std::filesystem::path directory);

    /// Throws Failure where the job can't go on.
    DemoResult Run();

  private:
    std::string AnswerQuestion(const ObjectFileQuestion& question) const;
    void Load(Manager& manager);
    void Change(Manager& manager);
    void Save(Manager& manager);
    void Reload();
    void CheckHostSection(const char* name, const std::string& payload);

    const Plugin& m_plugin;
    std::filesystem::path m_directory;
    TraceDataFile m_container;
    DemoResult m_result;
};

}  // namespace stmdcm
