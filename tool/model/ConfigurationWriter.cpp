#include "tool/model/ConfigurationWriter.h"

#include <fmt/format.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tool/Failure.h"
#include "tool/capture/Container.h"
#include "tool/model/ConfigurationSource.h"
#include "tool/model/LoadableText.h"
#include "tool/output/OutputFile.h"
#include "tool/plugin/Manager.h"
#include "tool/plugin/PluginSession.h"
#include "trace/dcm/EnvironmentVariables.h"
#include "trace/dcm/ObjectFileSection.h"
#include "trace/dcm/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr char kSettingsName[] = "written";
constexpr char kSettingsExtension[] = ".dcm";  // The plug-in adds it.

std::string ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

std::string ConfigurationWriter::MakeCapture(Manager& manager) const {
    std::string path = m_session.WorkingFile("written.tdf");
    m_session.container.Create(path);
    m_session.container.AppendSection(path, kDeviceSectionName, kDeviceSectionVersion, kNoDeviceText);
    if (!manager.Save(path, TRACE_DATA_FILE_TDF)) {
        throw Failure(fmt::format("{}: the plug-in can't save the configuration", path));
    }
    return path;
}

std::string ConfigurationWriter::MakeSettings(Manager& manager) const {
    // The manager has set the variable.
    const char* directory = ::getenv(kSettingsDirectoryVariable);
    std::string path = fmt::format("{}/{}{}", directory == nullptr ? "" : directory, kSettingsName, kSettingsExtension);
    std::filesystem::remove(path);
    if (!manager.Save(kSettingsName, TRACE_DATA_FILE_LOCAL) || !std::filesystem::exists(path)) {
        throw Failure(fmt::format("{}: the plug-in can't save the settings", path));
    }
    return path;
}

std::vector<Difference> ConfigurationWriter::CompareWith(const Configuration& expected, const std::string& path) const {
    const LoadedConfiguration loaded = ConfigurationSource(m_session).Load(path);
    loaded.RequireLoaded();
    Configuration wanted = expected;
    if (loaded.kind == ConfigurationKind::Settings) {
        wanted.objectFiles.clear();
    }
    return Compare(wanted, loaded.configuration);
}

std::vector<Difference> ConfigurationWriter::WriteNew(Manager& manager, const Configuration& expected,
                                                      const std::string& path, bool force,
                                                      const std::vector<std::string>& inputs) const {
    const bool isCapture = ConfigurationSource::KindOfName(path) == ConfigurationKind::Capture;
    OutputFile output(path, force, inputs);
    const std::string made = isCapture ? MakeCapture(manager) : MakeSettings(manager);
    std::vector<Difference> differences = CompareWith(expected, made);
    output.Write(ReadAll(made));
    output.Commit();
    return differences;
}

std::vector<std::string> ConfigurationWriter::AppendTo(const std::string& capture, Manager& manager,
                                                       const Configuration& expected) const {
    const Container container(capture);
    if (!container.IsWhole()) {
        throw Failure(
            fmt::format("{}: the capture is damaged at offset {}, what is appended could not be found; recover "
                        "it first",
                        capture, container.StopOffset()));
    }
    if (container.Find(kStmSectionName, kStmSectionVersion) != nullptr ||
        container.Find(kCommonSectionName, kCommonSectionVersion) != nullptr) {
        throw Failure(
            fmt::format("{}: the capture holds a configuration, and hosts would go on reading that; save into "
                        "a file of its own and use apply",
                        capture));
    }
    if (!manager.Save(capture, TRACE_DATA_FILE_TDF)) {
        throw Failure(
            fmt::format("{}: the plug-in can't save the configuration; check that the file can be written", capture));
    }
    const Section* device = container.Find(kDeviceSectionName, kDeviceSectionVersion);
    if (device == nullptr) {
        return {
            fmt::format("{}: hosts can't load the configuration before the capture gets a section {} (version {}) "
                        "from its own host; one line in it is enough",
                        capture, kDeviceSectionName, kDeviceSectionVersion)};
    }
    if (device->IsEmpty()) {
        return {fmt::format("{}: hosts can't load the configuration, because the capture's section {} is empty",
                            capture, kDeviceSectionName)};
    }
    if (!CompareWith(expected, capture).empty()) {
        return {fmt::format("{}: hosts load another configuration than was saved: diff shows how", capture)};
    }
    return {};
}

}  // namespace stmdcm
