#include "stmdcm/plugin/PluginLog.h"

#include <stdlib.h>

#include <algorithm>
#include <sstream>
#include <system_error>
#include <utility>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"
#include "stmdcm/capture/DirectoryNames.h"
#include "stmdcm/plugin/TraceHome.h"
#include "stmdcm/plugin/WorkingFile.h"
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

/// Empty while there is none.
std::string PluginLog::File() const {
    std::error_code error;
    for (const std::string& name : NamesIn(m_directory, error)) {
        if (name.starts_with(kFileNameStart)) {
            return m_directory / name;
        }
    }
    if (error && error != std::errc::no_such_file_or_directory) {
        throw Failure(m_directory.string(), "the directory can't be read: " + ZU_WEP::ErrnoText(error.value()));
    }
    return {};
}

std::string PluginLog::ReadNew() {
    const std::string file = File();
    std::string text = file.empty() ? "" : ReadWorkingFile(file);
    text.erase(0, std::exchange(m_taken, text.size()));
    return text;
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

std::string PluginLog::WhyFailed(const std::string& file) {
    const std::vector<PluginMessage> messages = Take();
    const auto first = std::find_if(messages.begin(), messages.end(), [](const PluginMessage& message) {
        return message.kind == PluginMessage::Kind::Error;
    });
    if (first == messages.end()) {
        return "";
    }
    const std::string start = file + ": ";
    return ": " + first->text.substr(first->StartsWith(start) ? start.size() : 0);
}

}  // namespace stmdcm
