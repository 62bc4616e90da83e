#pragma once

#include <string>

#include "stmdcm/plugin/Plugin.h"
#include "stmdcm/plugin/PluginLog.h"
#include "stmdcm/plugin/TraceHome.h"

namespace stmdcm {

/// The plug-in in a home of its own with its log switched on: what a command works with.
struct PluginSession {
    /// The program's own plug-in when `pluginFile` is empty, a home that is removed when `keep` is. Throws Failure.
    explicit PluginSession(const std::string& pluginFile, const std::string& keep = {})
        : home(keep.empty() ? TraceHome() : TraceHome(keep)), log(home), plugin(home, pluginFile) {}

    /// A path for a working file, which goes with the session.
    std::string WorkingFile(const char* name) const { return (home.Path() / name).string(); }

    TraceHome home;
    PluginLog log;
    Plugin plugin;
};

}  // namespace stmdcm
