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

    /// Loads the text into the manager as from a capture with that device identification: properties that neither
    /// sets stay as they are, the use cases are replaced, the object files are left alone. Unlike the load of a
    /// settings file this tells a failure from advice.
    void Load(Manager& manager, std::string_view text, std::string_view device = {}) const;
    Configuration Read(std::string_view text, std::string_view device = {}) const;

  private:
    PluginSession& m_session;
};

}  // namespace stmdcm
