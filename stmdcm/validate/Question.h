#pragma once

#include <string>

namespace stmdcm::validate {

class Host;

/// What became of a question.
enum class Verdict : char { Pass, Warning, Skip, Fail, Crashed, TimedOut };

/// "pass", "warning", "skip", "fail", "crashed", "timed out".
const char* VerdictName(Verdict verdict);

/// How a library answered.
struct Answer {
    Verdict verdict = Verdict::Pass;
    std::string asked;     ///< exactly what; empty where there is no more to tell
    std::string expected;  ///< empty for a skip
    std::string came;      ///< for a skip: why

    /// Whether the library did not do what its hosts rely on.
    bool IsFailure() const { return verdict >= Verdict::Fail; }
    /// What was asked, what was expected and what came; empty for a pass.
    std::string Sentence() const;
};

/// One question to a library.
struct Question {
    const char* id;    ///< "group.name"
    const char* asks;  ///< a sentence without its full stop: what a library has to do
    const char* rule;  ///< where that is stated: a page of docs/, and its part
    /// Drives the library in a process of its own; throws the Answer unless it is a pass. What else leaves it is a
    /// failure.
    void (*ask)(Host& host);
};

}  // namespace stmdcm::validate
