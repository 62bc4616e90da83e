#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/support/ScratchDir.h"

namespace stmdcm_fuzz {

/// Ends the program as a finding.
inline void Require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "not so: %s\n", what);
        std::abort();
    }
}

inline std::string Text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// A directory of this process, in memory.
inline const stmdcm_test::ScratchDir& Scratch() {
    static const stmdcm_test::ScratchDir directory(stmdcm_test::MemoryDirectory());
    return directory;
}

}  // namespace stmdcm_fuzz
