#pragma once

#include <string>
#include <vector>

#include "tool/model/Comparison.h"
#include "tool/model/LoadedConfiguration.h"

namespace stmdcm {

class Manager;
struct PluginSession;

/// Writes what a manager holds into files, through the plug-in, and loads each again before it is called good.
class ConfigurationWriter {
  public:
    explicit ConfigurationWriter(PluginSession& session) : m_session(session) {}

    /// A working capture with the manager's configuration and kNoDeviceText. Throws Failure.
    std::string MakeCapture(Manager& manager) const;

    /// A new capture or settings file, as the name says (OutputFile's rules). What comes back differs from `expected`:
    /// the format could not keep it.
    std::vector<Difference> WriteNew(Manager& manager, const Configuration& expected, const std::string& path,
                                     bool force, const std::vector<std::string>& inputs) const;

    /// Appends to a capture that holds no configuration yet; Failure for one that does. Gives what is doubtful.
    std::vector<std::string> AppendTo(const std::string& capture, Manager& manager,
                                      const Configuration& expected) const;

  private:
    std::string MakeSettings(Manager& manager) const;
    std::vector<Difference> CompareWith(const Configuration& expected, const std::string& path) const;

    PluginSession& m_session;
};

}  // namespace stmdcm
