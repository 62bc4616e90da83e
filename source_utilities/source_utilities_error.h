#pragma once

#include <stdexcept>

namespace ZU_WEP {

/// What the utility library throws. It carries its message alone.
class source_utilities_error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace ZU_WEP
