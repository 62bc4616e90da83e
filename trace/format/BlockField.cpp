#include "trace/format/BlockField.h"

#include <cctype>
#include <limits>

namespace Zu::Wep::Trace {

long WholeNumber(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())) != 0) {
        text.remove_prefix(1);
    }
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    const unsigned long limit = (isNegative ? 1UL : 0UL) + std::numeric_limits<long>::max();
    unsigned long digits = 0;
    for (const char c : text) {
        const auto digit = static_cast<unsigned long>(c - '0');
        if (digit > 9) {
            break;
        }
        digits = digits > (limit - digit) / 10 ? limit : 10 * digits + digit;
    }
    return static_cast<long>(isNegative ? 0 - digits : digits);
}

}  // namespace Zu::Wep::Trace
