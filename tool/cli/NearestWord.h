#pragma once

#include <string>
#include <vector>

namespace stmdcm {

/// The one of `words` that `word` may have been meant to be: it begins so, or a few letters differ or are swapped.
/// Empty when none is near.
std::string NearestWord(const std::string& word, const std::vector<std::string>& words);

}  // namespace stmdcm
