#include "Log.h"

#include <stdlib.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

/// This process's log: the plug-in has exported the directory and the number at the end of the name.
fs::path LogFile() {
    const char* directory = getenv("ZU_TRACE_LOGGING_DIR");
    const char* process = getenv("ZU_TRACE_DEBUGCLIENT_PID");
    if (directory == nullptr || process == nullptr) {
        return {};
    }
    const std::string end = std::string("_") + process + ".txt";
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, error)) {
        const std::string name = entry.path().filename().string();
        if (name.size() > end.size() && name.compare(name.size() - end.size(), end.size(), end) == 0) {
            return entry.path();
        }
    }
    return {};
}

}  // namespace

void SwitchLogOn() { setenv("ZU_TRACE_LOGGING", "1", 0); }

std::string SeeLog() {
    const fs::path log = LogFile();
    return log.empty() ? "; there is no log" : "; why, as far as it is known, stands in " + log.string();
}
