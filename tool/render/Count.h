#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace stmdcm {

/// Something of which a summary tells how many there were.
struct Count {
    std::string what;  ///< "changed", or a noun
    std::size_t number = 1;
    bool isNoun = false;  ///< "1 error", "2 errors"
};

/// Of a file that was to be changed: "changed", "would be changed", "as asked already".
Count ChangeCount(bool hasChanges, bool isWritten);

/// "2 errors, 1 note", without those of which there is none; "nothing found" where there is none at all.
std::string InWords(const std::vector<Count>& counts);

}  // namespace stmdcm
