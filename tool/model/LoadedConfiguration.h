#pragma once

#include <string>
#include <vector>

#include "tool/ExitStatus.h"
#include "tool/model/Configuration.h"

namespace stmdcm {

enum class ConfigurationKind { Capture, Settings };

/// "capture", "settings".
const char* KindName(ConfigurationKind kind);

/// A configuration out of a file, with what is to be said about it.
struct LoadedConfiguration {
    std::string path;
    ConfigurationKind kind = ConfigurationKind::Settings;
    bool isLoaded = false;        ///< any host can load it
    bool hasSettings = false;     ///< properties and use cases were read, perhaps of a capture that hosts can't load
    bool hasObjectFiles = false;  ///< never of a settings file
    bool hasDeviceText = false;   ///< a capture's device identification holds something
    Configuration configuration;
    std::vector<std::string> doubts;  ///< sentences: why it is not loaded, or what was not read

    ExitStatus Status() const;
    /// The doubts, each behind the path.
    std::vector<std::string> Sentences() const;
    /// Throws Failure with the doubts unless a host can load it.
    void RequireLoaded() const;
    /// Throws Failure with the doubts unless properties and use cases were read.
    void RequireSettings() const;
};

}  // namespace stmdcm
