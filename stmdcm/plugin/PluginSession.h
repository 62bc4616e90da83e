#pragma once

#include <string>

#include "stmdcm/plugin/Plugin.h"
#include "stmdcm/plugin/PluginLog.h"
#include "stmdcm/plugin/TraceHome.h"

namespace stmdcm {

/// The plug-in in a home of its own, with its log switched on.
struct PluginSession {
    /// Borrows the home. The program's own plug-in when `pluginFile` is empty. Throws Failure.
    PluginSession(const TraceHome& where, const std::string& pluginFile)
        : home(where), log(home), plugin(home, pluginFile) {}

    /// A path for a working file, which goes with the home.
    std::string WorkingFile(const char* name) const { return (home.Path() / name).string(); }

    const TraceHome& home;
    PluginLog log;
    Plugin plugin;
};

}  // namespace stmdcm
