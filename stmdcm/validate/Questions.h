#pragma once

#include <span>
#include <string>
#include <vector>

#include "stmdcm/validate/Question.h"

namespace stmdcm::validate {

// A question is a row in the table of its group. The pages of docs/ are what it may ask.

std::span<const Question> LibraryQuestions();
std::span<const Question> LifeQuestions();
std::span<const Question> PropertyQuestions();
std::span<const Question> TextQuestions();
std::span<const Question> SettingsQuestions();
std::span<const Question> CaptureQuestions();
std::span<const Question> DamageQuestions();
std::span<const Question> ContainerQuestions();
std::span<const Question> UsecaseQuestions();
std::span<const Question> ImageQuestions();
std::span<const Question> EnvironmentQuestions();
std::span<const Question> LiveQuestions();

/// Every question, in the order in which they are asked.
std::vector<const Question*> AllQuestions();
/// The first of them: a library that can't be loaded is asked nothing else.
const Question& LoadsQuestion();

/// "library" of "library.loads".
std::string GroupOf(const Question& question);

}  // namespace stmdcm::validate
