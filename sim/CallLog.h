#pragma once

#include <string>

namespace stmdcm_sim {

/// The file named by STMDCM_SCENARIO_LOG, which gets one line for each call of the simulated target
/// (docs/scenario.md). Nothing is written when the variable is unset or empty.
class CallLog {
  public:
    /// Appends a line. A file that can't be written costs the line, and standard error is told.
    static void Write(const std::string& line);
    /// `text` in quotes, without line breaks.
    static std::string Quoted(const std::string& text);
};

}  // namespace stmdcm_sim
