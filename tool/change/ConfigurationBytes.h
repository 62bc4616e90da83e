#pragma once

#include <string>
#include <string_view>

#include "tool/model/Configuration.h"

namespace stmdcm {

class Manager;
struct PluginSession;

/// Settings text (docs/settings-text.md) to and from managers, by way of small captures of the session's own: so the
/// bytes are the plug-in's, and no file of the user's is touched.
class ConfigurationBytes {
  public:
    explicit ConfigurationBytes(PluginSession& session) : m_session(session) {}

    /// What the plug-in writes into a capture for what the manager holds.
    std::string SettingsText(Manager& manager) const;

    /// Loads the text into the manager as from a capture with that device identification and no object files.
    void Load(Manager& manager, std::string_view text, std::string_view device = {}) const;
    Configuration Read(std::string_view text, std::string_view device = {}) const;

    /// Loads the text into the manager as a host loads a settings file: properties that it does not set stay as they
    /// are, the use cases are replaced.
    void Apply(Manager& manager, std::string_view text) const;

  private:
    PluginSession& m_session;
};

}  // namespace stmdcm
