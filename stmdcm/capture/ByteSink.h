#pragma once

#include <cstdint>
#include <string_view>

namespace stmdcm {

/// Takes bytes, one behind the other. Throws Failure.
class ByteSink {
  public:
    virtual ~ByteSink() = default;
    virtual void Write(std::string_view bytes) = 0;
    virtual void WriteZeros(std::uint64_t count) = 0;
};

}  // namespace stmdcm
