#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace stmdcm {

/// Has a scenario played, by the simulated trace factory unless another directory is named. Empty: what the
/// environment says (kScenarioVariable). Gives the directory of the factory; empty for the dynamic loader's own. Throws
/// Failure for a scenario that is not there.
std::filesystem::path ChooseFactory(const std::string& scenario, const std::string& directory);

/// The names of the CPUs of the live system, as its trace factory (host/CTraceFactory.h) tells them: from that
/// directory, or from the dynamic loader's where it is empty. Throws Failure.
std::vector<std::string> TargetCpus(const std::filesystem::path& directory);

}  // namespace stmdcm
