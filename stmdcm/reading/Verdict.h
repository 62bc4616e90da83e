#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"

namespace stmdcm {

/// What becomes of a file that a host loads.
struct Verdict {
    bool loads = false;
    std::vector<std::string> missing;  ///< what the host will not have: "some use cases", "all properties"
    std::string sentence;              ///< "loads, but without some use cases"
};

Verdict VerdictOn(const Reading& reading);

}  // namespace stmdcm
