#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/output/OutputFile.h"

namespace stmdcm {

class TraceHome;

/// The file of `stmdcm live --record`: the scenario that the recorder writes while a target is asked.
class LiveRecording {
  public:
    /// Refuses the file as OutputFile does, before the target is asked. Nothing is done for an empty name.
    LiveRecording(const TraceHome& home, const std::string& file, bool force, const std::vector<std::string>& inputs);

    /// Calls `ask()`, which gives an exit status and has nothing of the target left then, and keeps what was recorded,
    /// also where it fails. Gives sentences: what of the target is not in it.
    template <class Ask>
    std::vector<std::string> Of(Ask ask) {
        try {
            ask();
        } catch (...) {
            Keep();
            throw;
        }
        return Keep();
    }

  private:
    std::vector<std::string> Keep();

    std::string m_working;
    std::optional<OutputFile> m_output;
};

}  // namespace stmdcm
