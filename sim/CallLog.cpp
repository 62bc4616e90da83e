#include "sim/CallLog.h"

#include <cerrno>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "sim/StdioFile.h"
#include "source_utilities/ErrnoText.h"
#include "stmdcm/reading/Escaped.h"

namespace stmdcm_sim {

void CallLog::Write(const std::string& line) {
    const char* path = std::getenv("STMDCM_SCENARIO_LOG");
    if (path == nullptr || *path == '\0') {
        return;
    }
    const StdioFile file = OpenStdioFile(path, "a");
    if (file == nullptr || std::fputs((line + "\n").c_str(), file.get()) < 0 || std::fflush(file.get()) != 0) {
        std::fprintf(stderr, "libTraceFactory: %s: %s\n", stmdcm::Escaped(path).c_str(),
                     ZU_WEP::ErrnoText(errno).c_str());
    }
}

std::string CallLog::Quoted(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace stmdcm_sim
