#pragma once

#include <stdexcept>
#include <string>

#include "tool/ExitStatus.h"

namespace stmdcm {

/// Ends a command: the sentence for the user and the exit status that goes with it.
class Failure : public std::runtime_error {
  public:
    explicit Failure(const std::string& sentence, ExitStatus status = ExitStatus::Failed)
        : std::runtime_error(sentence), m_status(status) {}

    ExitStatus Status() const { return m_status; }

  private:
    ExitStatus m_status;
};

}  // namespace stmdcm
