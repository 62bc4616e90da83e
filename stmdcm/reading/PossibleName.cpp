#include "stmdcm/reading/PossibleName.h"

#include <fmt/format.h>

#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

constexpr std::size_t kToldOfTooLong = 60;

}  // namespace

void RequirePossibleName(const std::string& name) {
    const bool isTooLong = name.size() > kLongestName;
    const std::string told = isTooLong ? name.substr(0, kToldOfTooLong) + "..." : name;
    if (name.find('\0') != std::string::npos) {
        throw Failure(told, "there are zero bytes in this name; if they end the names of the list, use -0");
    }
    if (isTooLong) {
        throw Failure(told, fmt::format("the name is longer than {} bytes, as no file's is", kLongestName));
    }
}

}  // namespace stmdcm
