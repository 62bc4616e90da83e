#include "stmdcm/validate/Question.h"

#include <fmt/format.h>

namespace stmdcm::validate {

const char* VerdictName(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
            return "pass";
        case Verdict::Warning:
            return "warning";
        case Verdict::Skip:
            return "skip";
        case Verdict::Fail:
            return "fail";
        case Verdict::Crashed:
            return "crashed";
        case Verdict::TimedOut:
            return "timed out";
    }
    return "";
}

std::string Answer::Sentence() const {
    if (expected.empty()) {
        return came;
    }
    return fmt::format("{}: expected {}, came {}", asked, expected, came);
}

}  // namespace stmdcm::validate
