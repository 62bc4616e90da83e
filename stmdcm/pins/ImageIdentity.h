#pragma once

#include <cstdint>
#include <string>

namespace stmdcm {

/// What a program image is, wherever it lies and whenever it was written.
struct ImageIdentity {
    std::uint64_t size = 0;  ///< in bytes
    std::string sha256;      ///< of all of it: kSha256Size bytes
    std::string buildId;     ///< the linker's, as the bytes that it wrote; empty: the image has none

    bool operator==(const ImageIdentity&) const = default;
};

inline constexpr std::size_t kSha256Size = 32;

/// What a file is to a pin.
enum class PinMatch {
    Same,         ///< the image that was captured
    SameBuildId,  ///< from the same link, but changed since, as by strip(1)
    Other
};

}  // namespace stmdcm
