#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace stmdcm {

/// Where this program's own files are, in the build tree as when installed: both have the same layout.

/// The places of the plug-in, the preferred first.
std::vector<std::filesystem::path> PluginCandidates();

inline constexpr char kFactoryFile[] = "libTraceFactory.so";
/// Names the simulated factory's scenario file (docs/scenario.md).
inline constexpr char kScenarioVariable[] = "STMDCM_SCENARIO";

/// The directory of the simulated trace factory. Throws Failure when it is not there.
std::filesystem::path SimulatorDirectory();
/// The directory of the one that records another (docs/scenario.md). Throws Failure when it is not there.
std::filesystem::path RecorderDirectory();

/// A data file that is shipped with the program. Throws Failure when it is not there.
std::filesystem::path DataFile(const std::string& name);

}  // namespace stmdcm
