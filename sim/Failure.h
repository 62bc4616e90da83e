#pragma once

#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <string>

namespace stmdcm_sim {

/// What the calls of one kind do in place of their work, step by step; none fails behind the last step.
class Failure {
  public:
    enum class Kind {
        VornError,
        StdException,
        Integer,
        Nothing,  ///< returns, but gives nothing
        None      ///< does its work
    };
    static constexpr std::int64_t kAlways = std::numeric_limits<std::int64_t>::max();

    struct Step {
        Kind kind = Kind::None;
        std::int64_t times = kAlways;
        std::optional<std::string> message;  ///< of what is thrown; none: one that names the call
    };

    void Add(Step step) { m_steps.push_back(std::move(step)); }

    /// Fails `call`, if that is to be: throws, or returns true when the call is to give nothing.
    bool Strike(const std::string& call);

  private:
    std::deque<Step> m_steps;
};

}  // namespace stmdcm_sim
