#include "tool/reports/RestoreReport.h"

#include <fmt/format.h>

#include "stmdcm/reading/Words.h"

namespace stmdcm {

const char* RestoreReport::Outcome() const {
    if (!result.hasChanges) {
        return "is what is in force, nothing was written";
    }
    return result.isWritten ? "is in force again" : "would be in force again";
}

std::string RestoreReport::Text(const Palette& /*palette*/) const {
    return fmt::format("{}: configuration {} ({}) {}\n", Shown(file), number, result.restored.name, Outcome());
}

Json RestoreReport::Document() const {
    return JsonRenderer::Document("restore", {{"file", file},
                                              {"number", number},
                                              {"section", result.restored.name},
                                              {"changed", result.hasChanges},
                                              {"written", result.isWritten},
                                              {"doubts", result.doubts}});
}

}  // namespace stmdcm
