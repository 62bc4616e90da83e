#include "trace/usecase/UsecaseInfoBase.h"

#include <algorithm>
#include <cstring>

#include "trace/format/BlockLines.h"

namespace Zu::Wep::Trace {

bool myfgets(char* dst, int size, std::istringstream& in) {
    std::string_view line;
    BlockLines lines(UsecaseKind::Sc, in);
    const bool hasText = lines.Next(line);
    if (lines.IsAtEnd()) {
        return false;
    }
    const std::size_t length = std::min(line.size(), static_cast<std::size_t>(std::max(size, 0)));
    std::memcpy(dst, line.data(), length);
    dst[length] = '\0';
    return hasText;
}

}  // namespace Zu::Wep::Trace
