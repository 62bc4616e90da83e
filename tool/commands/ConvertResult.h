#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"

namespace stmdcm {

/// What a conversion did.
struct ConvertResult {
    std::string from;
    std::string to;
    ConfigurationKind fromKind = ConfigurationKind::Capture;
    ConfigurationKind toKind = ConfigurationKind::Settings;
    std::vector<std::string> lost;  ///< sentences

    std::string Text() const;
    std::string Json() const;
};

}  // namespace stmdcm
