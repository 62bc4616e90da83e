#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/model/LoadedConfiguration.h"

namespace stmdcm {

class Manager;
struct PluginMessage;
struct PluginSession;

/// Settings text (docs/settings-text.md) through the plug-in, which says little about what it did not read.
class SettingsLoader {
  public:
    explicit SettingsLoader(PluginSession& session) : m_session(session) {}

    LoadedConfiguration Load(const std::string& path, Manager& manager) const;

    /// What a reader of `text`, which a capture holds, passes over.
    std::vector<std::string> DoubtsAbout(std::string_view text) const;

  private:
    /// What one reading by the plug-in gave.
    struct Reading;

    /// Reads `text` without the line ends and blanks at its end: an empty last line is all that the plug-in objects to
    /// in many a healthy text.
    Reading ReadTrimmed(std::string_view text) const;

    PluginSession& m_session;
};

}  // namespace stmdcm
