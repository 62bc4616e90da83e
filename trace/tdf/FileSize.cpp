#include "trace/tdf/FileSize.h"

#include <fcntl.h>

#include "source_utilities/PosixFile.h"

namespace Zu::Wep::Trace {

unsigned int FileSize(const char* path) {
    if (path == nullptr) {
        return 0;
    }
    const auto file = ZU_WEP::PosixFile::OpenAtOnce(path, O_RDONLY);
    return file.IsOpen() ? static_cast<unsigned int>(file.Size().value_or(0)) : 0;
}

}  // namespace Zu::Wep::Trace
