#pragma once

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace stmdcm {

/// What is in a directory, without "." and "..", in the system's order; `error` says what kept it from being read, or
/// read to its end. Throws bad_alloc, where the standard library's iterators end the program.
std::vector<std::string> NamesIn(const std::filesystem::path& directory, std::error_code& error);

}  // namespace stmdcm
