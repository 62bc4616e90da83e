#pragma once

#include <stdexcept>
#include <string>

namespace stmdcm {

/// Why something was not done: a sentence for the user that names the file.
class Failure : public std::runtime_error {
  public:
    enum class Kind {
        Work,    ///< it could not be done
        Request  ///< what was asked for makes no sense
    };

    explicit Failure(const std::string& sentence, Kind kind = Kind::Work)
        : std::runtime_error(sentence), m_kind(kind) {}

    Kind Cause() const { return m_kind; }

  private:
    Kind m_kind;
};

}  // namespace stmdcm
