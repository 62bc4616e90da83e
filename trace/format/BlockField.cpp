#include "trace/format/BlockField.h"

#include <cctype>
#include <limits>

namespace Zu::Wep::Trace {

long WholeNumber(std::string_view text) {
    const auto start = std::find_if_not(text.begin(), text.end(), [](unsigned char c) { return std::isspace(c) != 0; });
    text.remove_prefix(static_cast<std::size_t>(start - text.begin()));
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    unsigned long digits = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), digits);
    const unsigned long limit = (isNegative ? 1UL : 0UL) + std::numeric_limits<long>::max();
    if (error == std::errc::result_out_of_range || digits > limit) {
        digits = limit;
    }
    return static_cast<long>(isNegative ? 0 - digits : digits);
}

}  // namespace Zu::Wep::Trace
