#pragma once

#include <string>

#include "bench/captures/Random.h"

namespace stmdcm_bench {

/// A file as a test farm leaves it: a capture, whole, changed, torn or damaged, or a settings file.
struct GeneratedFile {
    std::string bytes;
    const char* extension;
};

/// `images` is a folder with the program images app0.out to app3.out.
GeneratedFile GenerateFile(Random& random, const std::string& images);

/// A file's name without its extension: now and then one that a shell, a page or a list would trip over. Each number
/// gives another one.
std::string GenerateName(Random& random, std::size_t number);

}  // namespace stmdcm_bench
