#include "tool/commands/Convert.h"

#include <fmt/format.h>

#include <filesystem>

#include "stmdcm/Failure.h"
#include "stmdcm/change/NewCapture.h"
#include "tool/commands/ConvertResult.h"
#include "tool/output/ConfigurationFile.h"

namespace stmdcm {

namespace fs = std::filesystem;

void Convert::Declare(CLI::App& app) {
    app.add_option("FROM", m_from, "A capture (.tdf) or a settings file")->required();
    app.add_option("TO", m_to, "A new settings file, or with the extension .tdf a new capture")->required();
    app.add_flag("--force", m_force,
                 "Overwrite a settings file, and convert what can be read of a source that is not read whole");
    app.footer(
        "Capture and settings file become each other; settings become settings as the plug-in writes them. The result "
        "is\n"
        "loaded and compared before it takes its place. A new capture holds the configuration and a DEVID of one "
        "line.\n"
        "Ends with status 3 when something was lost, such as the object files, for which settings have no place.\n\n"
        "Example:\n"
        "  stmdcm convert capture.tdf settings.txt");
}

ExitStatus Convert::Run(const Context& context) {
    CheckKinds();
    const Reading source = Read(m_from);
    source.RequireSettings();
    RequireWhole(source, m_force);
    Configuration expected = source.configuration;
    expected.objectFiles.clear();
    const std::string text = source.settings->Text();
    const bool isCapture = KindOfName(m_to) == ConfigurationKind::Capture;
    const std::vector<Difference> differences =
        WriteConfiguration(m_to, isCapture ? NewCapture(text) : text, expected, m_force, {m_from});

    ConvertResult result{m_from, m_to, *source.kind, KindOfName(m_to), source.Sentences()};
    for (std::string& sentence : LostFrom(source)) {
        result.lost.push_back(std::move(sentence));
    }
    for (const Difference& difference : differences) {
        result.lost.push_back(difference.Sentence(m_to));
    }
    context.console.Print(context.options.json ? result.Json() : result.Text());
    for (const std::string& sentence : result.lost) {
        context.console.Diagnose(sentence);
    }
    return result.lost.empty() ? ExitStatus::Done : ExitStatus::Doubtful;
}

void Convert::CheckKinds() const {
    if (KindOfName(m_to) != ConfigurationKind::Capture) {
        return;
    }
    if (KindOf(m_from) == ConfigurationKind::Capture) {
        throw Failure(fmt::format(
            "{} and {} are both captures; use apply to bring a configuration into another capture", m_from, m_to));
    }
    if (fs::exists(m_to)) {
        throw Failure(
            fmt::format("{}: the capture is there already; use apply to bring the configuration into it", m_to));
    }
}

std::vector<std::string> Convert::LostFrom(const Reading& source) const {
    std::vector<std::string> lost;
    if (!source.configuration.objectFiles.empty()) {
        lost.push_back(fmt::format("{}: settings have no object files: the {} of {} are lost", m_to,
                                   source.configuration.objectFiles.size(), m_from));
    }
    if (source.hasDeviceText) {
        lost.push_back(
            fmt::format("{}: settings have no device identification: the section DEVID of {} is lost, "
                        "except for properties in it",
                        m_to, m_from));
    }
    return lost;
}

}  // namespace stmdcm
