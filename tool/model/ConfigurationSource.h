#pragma once

#include <string>

#include "tool/model/LoadedConfiguration.h"

namespace stmdcm {

class Manager;
struct PluginSession;

/// Loads configurations out of captures and settings files, through the plug-in. Every failure to get at the file at
/// all is a Failure that names it; whatever else goes wrong is told by the loaded configuration.
class ConfigurationSource {
  public:
    /// The session must outlive this.
    explicit ConfigurationSource(PluginSession& session) : m_session(session) {}

    /// By content and extension: a capture begins with its identifier and is called `.tdf`, all else is settings text.
    /// Throws Failure where the two contradict each other, or the file can be neither.
    static ConfigurationKind KindOf(const std::string& path);
    /// By extension alone, for a file that is yet to be written.
    static ConfigurationKind KindOfName(const std::string& path);

    LoadedConfiguration Load(const std::string& path) const;
    /// Into `manager`, which should be fresh: what the file does not set stays as it is.
    LoadedConfiguration Load(const std::string& path, Manager& manager) const;

  private:
    PluginSession& m_session;
};

}  // namespace stmdcm
