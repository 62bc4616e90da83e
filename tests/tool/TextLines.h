#pragma once

#include <sstream>
#include <string>

namespace stmdcm {

/// Whether a line of `text` holds `first` and behind it `second`.
inline bool HasLineWith(const std::string& text, const std::string& first, const std::string& second) {
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        const std::size_t place = line.find(first);
        if (place != std::string::npos && line.find(second, place + first.size()) != std::string::npos) {
            return true;
        }
    }
    return false;
}

}  // namespace stmdcm
