#include "tool/model/SettingsLoader.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "tool/Failure.h"
#include "tool/model/ConfigurationReader.h"
#include "tool/plugin/Manager.h"
#include "tool/plugin/PluginSession.h"

namespace stmdcm {

using Zu::Wep::Trace::TRACE_DATA_FILE_LOCAL;

namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";
constexpr std::string_view kApplied = "STM Device DCM: ExtractValue: ";
constexpr std::string_view kRejected = "STM Device DCM: extracting fail: name = ";
constexpr std::string_view kValue = ", value = ";
constexpr std::string_view kTooLong = " is longer than ";
constexpr std::string_view kLine = " line ";

std::string_view Trimmed(std::string_view text) { return text.substr(0, text.find_last_not_of(kWhiteSpace) + 1); }

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

bool HasUsecases(const Configuration& configuration) {
    return !configuration.sc.empty() || !configuration.cpt.empty() || !configuration.pmi.empty();
}

std::string RejectedLine(const PluginMessage& message) {
    std::string line = message.text.substr(kRejected.size());
    if (const std::size_t place = line.find(kValue); place != std::string::npos) {
        line.replace(place, kValue.size(), " = ");
    }
    return fmt::format("\"{}\" is no property; reading the properties ends there, later ones are not read", line);
}

/// "line 27 is longer than 126 characters, the rest is skipped"
std::string LongLine(const PluginMessage& message) {
    const std::size_t place = message.text.rfind(kLine, message.text.rfind(kTooLong));
    return message.text.substr(place == std::string::npos ? 0 : place + 1);
}

}  // namespace

struct SettingsLoader::Reading {
    bool isClean = false;
    std::ptrdiff_t applied = 0;
    std::vector<std::string> rejected;   ///< lines that are no property
    std::vector<std::string> longLines;  ///< lines over the limits of a settings file

    void Take(const std::vector<PluginMessage>& messages) {
        for (const PluginMessage& message : messages) {
            if (message.StartsWith(kApplied)) {
                ++applied;
            } else if (message.StartsWith(kRejected)) {
                rejected.push_back(RejectedLine(message));
                --applied;
            } else if (message.text.find(kTooLong) != std::string::npos) {
                longLines.push_back(LongLine(message));
            }
        }
    }

    std::vector<std::string> Doubts() const {
        if (isClean || !rejected.empty() || !longLines.empty()) {
            return rejected;
        }
        return {
            "reading the properties ends at a line that is neither NAME = VALUE nor a block; what is behind it may "
            "not be read; check shows where"};
    }
};

SettingsLoader::Reading SettingsLoader::ReadTrimmed(std::string_view text) const {
    const std::string copy = m_session.WorkingFile("trimmed.txt");
    std::ofstream(copy, std::ios::binary) << Trimmed(text);
    Manager scratch(m_session.plugin, "stmdcm-trimmed");
    m_session.log.Take();
    Reading reading;
    reading.isClean = scratch.Load(copy, TRACE_DATA_FILE_LOCAL);
    reading.Take(m_session.log.Take());
    return reading;
}

std::vector<std::string> SettingsLoader::DoubtsAbout(std::string_view text) const {
    if (Trimmed(text).empty()) {
        return {"its settings text is empty, everything is at its default"};
    }
    return ReadTrimmed(text).Doubts();  // A capture's lines may be of any length.
}

LoadedConfiguration SettingsLoader::Load(const std::string& path, Manager& manager) const {
    const std::string text = ReadText(path);
    if (Trimmed(text).empty()) {
        throw Failure(fmt::format("{}: there is nothing but blanks in the file", path));
    }
    LoadedConfiguration loaded;
    loaded.path = path;
    m_session.log.Take();
    manager.Load(path, TRACE_DATA_FILE_LOCAL);
    loaded.configuration = ReadConfiguration(manager);

    const Reading reading = ReadTrimmed(text);
    loaded.isLoaded = reading.applied > 0 || HasUsecases(loaded.configuration);
    loaded.hasSettings = loaded.isLoaded;
    loaded.doubts = reading.Doubts();
    loaded.doubts.insert(loaded.doubts.end(), reading.longLines.begin(), reading.longLines.end());
    if (!loaded.isLoaded) {
        loaded.doubts.insert(loaded.doubts.begin(), "this is no settings text: there is no property and no use case");
    }
    return loaded;
}

}  // namespace stmdcm
