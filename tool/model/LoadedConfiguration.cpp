#include "tool/model/LoadedConfiguration.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "tool/Failure.h"

namespace stmdcm {

const char* KindName(ConfigurationKind kind) { return kind == ConfigurationKind::Capture ? "capture" : "settings"; }

ExitStatus LoadedConfiguration::Status() const {
    if (!isLoaded) {
        return ExitStatus::Failed;
    }
    return doubts.empty() ? ExitStatus::Done : ExitStatus::Doubtful;
}

std::vector<std::string> LoadedConfiguration::Sentences() const {
    std::vector<std::string> sentences;
    for (const std::string& doubt : doubts) {
        sentences.push_back(fmt::format("{}: {}", path, doubt));
    }
    return sentences;
}

void LoadedConfiguration::RequireLoaded() const {
    if (!isLoaded) {
        throw Failure(fmt::format("{}: {}", path, fmt::join(doubts, "; ")));
    }
}

void LoadedConfiguration::RequireSettings() const {
    if (!hasSettings) {
        throw Failure(fmt::format("{}: {}", path, fmt::join(doubts, "; ")));
    }
}

}  // namespace stmdcm
