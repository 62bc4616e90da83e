#include "trace/format/BlockReader.h"

#include <algorithm>
#include <cstring>

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

int SearchForNextBlock(std::string_view line, BlockLines& in) {
    if (line == kBlockOpen) {
        in.Tell(&TextReporter::OnBlockOpened, line);
        return 0;
    }
    if (!line.empty()) {
        in.Tell(&TextReporter::OnSkippedLine, line);
    }
    std::string_view current;
    while (in.Next(current)) {
        if (current.starts_with(kBlockOpen)) {
            in.Tell(&TextReporter::OnBlockOpened, current);
            return 0;
        }
        in.Tell(&TextReporter::OnSkippedLine, current);
    }
    return 1;
}

}  // namespace Zu::Wep::Trace
