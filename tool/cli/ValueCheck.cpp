#include "tool/cli/ValueCheck.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>

namespace stmdcm {

CLI::Validator OneOf(const std::vector<std::string>& words) {
    const auto check = [words](const std::string& value) {
        const bool isOne = std::find(words.begin(), words.end(), value) != words.end();
        return isOne ? "" : fmt::format("\"{}\" is none of {}", value, fmt::join(words, ", "));
    };
    return {check, fmt::format("{{{}}}", fmt::join(words, ","))};
}

CLI::Validator SomeText() {
    return {[](const std::string& value) { return value.empty() ? "it is empty" : ""; }, ""};
}

CLI::Validator WholeNumber(std::uint64_t most, std::uint64_t least) {
    const auto check = [most, least](const std::string& value) -> std::string {
        std::uint64_t number = 0;
        const char* end = value.data() + value.size();
        const auto [behind, error] = std::from_chars(value.data(), end, number);
        if (behind != end || error == std::errc::invalid_argument) {
            return fmt::format("\"{}\" is no whole number", value);
        }
        if (error != std::errc() || number > most) {
            return fmt::format("{} is more than {}", value, most);
        }
        return number < least ? fmt::format("{} is less than {}", value, least) : "";
    };
    return {check, ""};
}

}  // namespace stmdcm
