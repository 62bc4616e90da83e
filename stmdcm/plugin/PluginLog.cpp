#include "stmdcm/plugin/PluginLog.h"

#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

#include "stmdcm/plugin/TraceHome.h"
#include "trace/dcm/EnvironmentVariables.h"

namespace stmdcm {

namespace fs = std::filesystem;

namespace {

constexpr char kFileOnly[] = "1";
constexpr char kFileNameStart[] = "zu_trace_log_";
constexpr std::string_view kStampEnd = " | ";
constexpr std::size_t kUnexpectedPlace = 1;
constexpr std::size_t kErrorPlace = 4;
constexpr std::size_t kLetters = 5;

/// A line without a stamp is no message: trace lines of the library loader, and what follows a line break.
bool ParseLine(const std::string& line, PluginMessage& message) {
    const std::size_t stampEnd = line.find(kStampEnd);
    if (line.size() < kLetters || stampEnd == std::string::npos) {
        return false;
    }
    if (line[kErrorPlace] == 'E') {
        message.kind = PluginMessage::Kind::Error;
    } else if (line[kUnexpectedPlace] == 'W') {
        message.kind = PluginMessage::Kind::Unexpected;
    }
    message.text = line.substr(stampEnd + kStampEnd.size());
    return true;
}

}  // namespace

PluginLog::PluginLog(const TraceHome& home) : m_directory(home.Path() / ".ZU-trace") {
    ::setenv(Zu::Wep::Trace::kLoggingVariable, kFileOnly, 1);
}

std::string PluginLog::ReadNew() {
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_directory, ignored)) {
        if (entry.path().filename().string().starts_with(kFileNameStart)) {
            std::ifstream in(entry.path(), std::ios::binary);
            in.seekg(static_cast<std::streamoff>(m_taken));
            std::string text{std::istreambuf_iterator<char>(in), {}};
            m_taken += text.size();
            return text;
        }
    }
    return {};
}

std::vector<PluginMessage> PluginLog::Take() {
    std::istringstream in(ReadNew());
    std::vector<PluginMessage> messages;
    for (std::string line; std::getline(in, line);) {
        PluginMessage message;
        if (ParseLine(line, message)) {
            messages.push_back(std::move(message));
        }
    }
    return messages;
}

}  // namespace stmdcm
