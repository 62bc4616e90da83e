#include "sim/Play.h"

#include <thread>

#include "sim/CallLog.h"

namespace stmdcm_sim {

void Play(std::chrono::milliseconds delay, const std::string& call, Failure& failure,
          const std::function<std::string()>& work) {
    std::this_thread::sleep_for(delay);
    try {
        CallLog::Write(call + (failure.Strike(call) ? " gives nothing" : work()));
    } catch (...) {
        CallLog::Write(call + " throws");
        throw;
    }
}

}  // namespace stmdcm_sim
