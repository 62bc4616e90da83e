#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sim/Failure.h"

namespace stmdcm_sim {

/// How a channel driver answers the query for one attribute. What has no value is left as the caller had it.
struct AttributeAnswer {
    std::optional<std::int32_t> type;
    std::optional<std::string> text;
    Failure failure;
};

struct ScenarioCpu {
    std::string name;
    std::string objectFile;
    Failure objectFileFailure;
    Failure driverFailure;
    std::map<std::string, AttributeAnswer> attributes;
};

/// A simulated target, as docs/scenario.md describes its file. Calls use up the failures that are counted.
struct Scenario {
    std::chrono::milliseconds delay{0};  ///< before the answer to each call
    Failure factoryFailure;
    Failure serverFailure;
    Failure serverEndFailure;
    Failure listFailure;
    std::vector<ScenarioCpu> cpus;
};

}  // namespace stmdcm_sim
