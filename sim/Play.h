#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "sim/Failure.h"

namespace stmdcm_sim {

/// Plays one call of the simulated target: waits, fails if that is to be or does its work, and tells the call log.
/// `work` returns what the log is to tell of the result.
void Play(std::chrono::milliseconds delay, const std::string& call, Failure& failure,
          const std::function<std::string()>& work);

}  // namespace stmdcm_sim
