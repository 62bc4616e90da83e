#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace stmdcm_sim {

/// What came of the calls of one kind, in their order, as a scenario says it (docs/scenario.md).
class Steps {
  public:
    using Json = nlohmann::ordered_json;

    void Add(const Json& step) {
        if (m_runs.empty() || m_runs.back().first != step) {
            m_runs.emplace_back(step, 0);
        }
        ++m_runs.back().second;
    }

    /// One step, or an array: the last goes on for ever.
    Json Answers() const { return Written(m_runs.size(), true); }
    /// The same of failures, `{"with": "none"}` where there was none. Null when no call failed.
    Json Failures() const {
        const bool isOver = !m_runs.empty() && m_runs.back().first.value("with", "") == "none";
        return Written(m_runs.size() - (isOver ? 1 : 0), !isOver);
    }

  private:
    Json Written(std::size_t count, bool goesOn) const {
        Json steps = Json::array();
        for (std::size_t i = 0; i < count; ++i) {
            steps.push_back(m_runs[i].first);
            if (!goesOn || i + 1 < count) {
                steps.back()["times"] = m_runs[i].second;
            }
        }
        return count == 0 ? Json() : count == 1 ? steps[0] : steps;
    }

    std::vector<std::pair<Json, std::uint64_t>> m_runs;  ///< a step and how many calls in a row it was
};

}  // namespace stmdcm_sim
