#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace stmdcm {

/// Takes bytes, one behind the other. Throws Failure.
class ByteSink {
  public:
    virtual ~ByteSink() = default;
    virtual void Write(std::string_view bytes) = 0;
    /// For a sink that has something better for so many zeros than to write them.
    virtual void WriteZeros(std::uint64_t count) {
        const std::string zeros(std::min<std::uint64_t>(count, std::uint64_t{64} << 10), '\0');
        for (; count > 0; count -= std::min<std::uint64_t>(count, zeros.size())) {
            Write(std::string_view(zeros).substr(0, count));
        }
    }
};

}  // namespace stmdcm
