#include "Log.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>

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

std::string LastLine(const fs::path& log) {
    std::ifstream in(log);
    std::string last;
    for (std::string line; std::getline(in, line);) {
        last = line;
    }
    return last;
}

}  // namespace

void SwitchLogOn() { setenv("ZU_TRACE_LOGGING", "1", 0); }

std::string SeeLog() {
    const fs::path log = LogFile();
    if (log.empty()) {
        return "; there is no log";
    }
    return "; see " + log.string() + ", which ends with\n" + LastLine(log);
}
