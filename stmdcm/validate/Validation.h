#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "stmdcm/validate/Question.h"

namespace stmdcm::validate {

/// How a library is asked (docs/validate.md).
struct ValidationOptions {
    std::string library;  ///< an absolute path
    std::string folder;   ///< private; each question gets one of its own below it
    std::uint32_t seed = 1;
    std::chrono::seconds timeLimit{10};  ///< for each question
    std::size_t jobs = 1;                ///< so many questions at a time
    bool hasTarget = false;              ///< the dynamic loader finds the simulated trace factory first
};

/// A question and what the library answered.
struct Answered {
    const Question* question = nullptr;
    Answer answer;
    std::chrono::milliseconds took{};
};

/// Asks them, each in a process of its own, and gives the answers in the same order. Where the first is whether the
/// library can be loaded, and it can't, the others are skipped. Throws Failure where a question can't be asked.
std::vector<Answered> Validate(const std::vector<const Question*>& questions, const ValidationOptions& options);

}  // namespace stmdcm::validate
