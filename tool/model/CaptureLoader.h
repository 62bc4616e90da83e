#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/model/LoadedConfiguration.h"

namespace stmdcm {

class Container;
class Manager;
struct PluginSession;

/// A capture's configuration (docs/tdf.md) through the plug-in.
class CaptureLoader {
  public:
    explicit CaptureLoader(PluginSession& session) : m_session(session) {}

    LoadedConfiguration Load(const std::string& path, Manager& manager) const;

  private:
    struct Part;
    struct Parts;

    /// What the capture holds, though a section without which hosts can't load it is missing or empty.
    bool LoadRest(const Parts& parts, Manager& manager) const;

    PluginSession& m_session;
};

}  // namespace stmdcm
