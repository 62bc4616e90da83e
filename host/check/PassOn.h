#pragma once

#include <string>
#include <type_traits>

#include "host/check/HostCall.h"

namespace stmdcm_check {

/// What a call gives that can't be passed on: something that does no harm.
template <class Result>
Result Harmless() {
    if constexpr (std::is_same_v<Result, const char*>) {
        return "";
    } else {
        return Result();
    }
}

/// Does the work of a call. With an objection it tells that instead, and nothing is done.
template <class Work>
auto PassOn(HostCall& call, const std::string& objection, Work work) {
    using Result = std::invoke_result_t<Work>;
    return call.Run([&]() -> Result {
        if (objection.empty()) {
            return work();
        }
        call.Tell(objection + "; nothing was done");
        return Harmless<Result>();
    });
}

}  // namespace stmdcm_check
