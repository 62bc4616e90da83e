#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace stmdcm {

// What a value on the command line has to be. The sentences are this program's own.

/// One of the words, which completion offers.
CLI::Validator OneOf(const std::vector<std::string>& words);

/// A decimal number without a sign.
CLI::Validator WholeNumber(std::uint64_t most = std::numeric_limits<std::uint64_t>::max(), std::uint64_t least = 0);

/// Any but the empty one, which a variable that is not set makes of an option.
CLI::Validator SomeText();

}  // namespace stmdcm
