#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sim/Failure.h"

namespace stmdcm_sim {

/// What each call gives that does not fail: one after the other, and the last one from then on.
template <class Value>
class Sequence {
  public:
    void Add(Value value, std::int64_t times) { m_steps.push_back({std::move(value), times}); }
    bool IsEmpty() const { return m_steps.empty(); }
    /// For the call that is made now. Values stay where they are.
    Value& Next() {
        while (m_at + 1 < m_steps.size() && m_steps[m_at].times == 0) {
            ++m_at;
        }
        --m_steps[m_at].times;
        return m_steps[m_at].value;
    }

  private:
    struct Step {
        Value value;
        std::int64_t times;
    };

    std::vector<Step> m_steps;
    std::size_t m_at = 0;
};

/// How a channel driver answers the query for one attribute. What has no value is left as the caller had it.
struct AttributeAnswer {
    std::optional<std::int32_t> type;
    std::optional<std::string> text;
    bool isTextNull = false;
    Failure failure;
};

struct ScenarioCpu {
    std::string name;
    Sequence<std::string> objectFiles;
    Failure objectFileFailure;
    Failure driverFailure;
    std::map<std::string, Sequence<AttributeAnswer>> attributes;
};

/// A simulated target, as docs/scenario.md describes its file. Calls use up the failures that are counted.
struct Scenario {
    std::chrono::milliseconds delay{0};  ///< before the answer to each call
    Failure factoryFailure;
    Failure serverFailure;
    Failure serverEndFailure;
    Failure listFailure;
    Sequence<std::vector<std::string>> lists;  ///< none: all CPUs
    std::vector<ScenarioCpu> cpus;
};

}  // namespace stmdcm_sim
