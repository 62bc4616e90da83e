#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace stmdcm {

/// Has the trace factory of `directory`, empty for the one that the dynamic loader finds, recorded: gives the directory
/// of the recorder, which takes its place (docs/scenario.md, "Recording"). Throws Failure when there is none to record.
/// May be called again when the program has started again to search there first.
std::filesystem::path RecorderInFrontOf(const std::filesystem::path& directory);

/// Where the recorder puts the scenario; not there as long as nothing was recorded.
void RecordInto(const std::string& file);

/// What the scenario says about itself: what of the target it does not hold, in sentences.
std::vector<std::string> RemarksOf(const std::string& scenario);

}  // namespace stmdcm
