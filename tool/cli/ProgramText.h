#pragma once

#include <span>

namespace stmdcm {

/// A word and what it means.
struct TextRow {
    const char* name;
    const char* meaning;
};

// What the help of the whole program says besides its commands and options.

inline constexpr char kProgramDescription[] = "Works with the configurations of STM trace captures.";
inline constexpr char kExample[] = "stmdcm show capture.tdf";

std::span<const TextRow> ExitStatusRows();
std::span<const TextRow> EnvironmentRows();

}  // namespace stmdcm
