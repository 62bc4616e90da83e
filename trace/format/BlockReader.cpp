#include "trace/format/BlockReader.h"

namespace Zu::Wep::Trace {

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
