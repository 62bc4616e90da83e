#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace stmdcm_sim {

/// What a call of the simulated target does in place of its work.
class Failure {
  public:
    enum class Kind {
        VornError,
        StdException,
        Integer,
        Nothing  ///< returns, but gives nothing
    };
    static constexpr std::int64_t kAlways = std::numeric_limits<std::int64_t>::max();

    /// Never fails.
    Failure() = default;
    /// Fails `times` times.
    Failure(Kind kind, std::int64_t times) : m_kind(kind), m_times(times) {}

    /// Fails `call`, if that is to be: throws, or returns true when the call is to give nothing.
    bool Strike(const std::string& call);

  private:
    Kind m_kind = Kind::Nothing;
    std::int64_t m_times = 0;
};

}  // namespace stmdcm_sim
