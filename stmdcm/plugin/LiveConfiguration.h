#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"

namespace stmdcm {

class Manager;
struct PluginMessage;
struct PluginSession;

/// What a manager got from the live target.
struct LiveConfiguration {
    std::string cpu;
    Configuration configuration;
    Reading saved;                    ///< what the manager saves into a capture
    std::vector<std::string> doubts;  ///< sentences: what the target did not answer, and what stands in for it

    /// Loads it into `manager`; throws Failure, with the step that failed, when there is no connection or no such CPU.
    static LiveConfiguration Load(PluginSession& session, Manager& manager);

  private:
    void AddAttributeDoubts(const std::vector<PluginMessage>& messages);
    void LoadObjectFiles(PluginSession& session, Manager& manager);
};

}  // namespace stmdcm
