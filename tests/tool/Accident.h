#pragma once

#include <random>
#include <string>
#include <vector>

namespace stmdcm {

/// What an accident has made of a settings text.
struct Accident {
    std::string what;
    std::string text;
    /// It may well be a text that says something else: nobody can tell that something is missing.
    bool isPlausible = false;
};

/// Damages a text in one place: a line dropped, doubled or cut, a block dropped, a brace removed, a byte zeroed.
class AccidentMaker {
  public:
    explicit AccidentMaker(unsigned seed) : m_random(seed) {}

    /// `passesOver`: the readers of the text pass over what they don't know.
    Accident Damage(const std::string& text, bool passesOver);

  private:
    using Lines = std::vector<std::string>;

    std::size_t Below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_random); }
    std::size_t AnyLine(const Lines& lines);
    std::string Change(Lines& lines, bool& isPlausible);

    std::mt19937 m_random;
};

}  // namespace stmdcm
