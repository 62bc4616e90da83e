#include "tool/model/ConfigurationSource.h"

#include <fmt/format.h>
#include <strings.h>

#include <filesystem>

#include "tool/Failure.h"
#include "tool/capture/CaptureFile.h"
#include "tool/model/CaptureLoader.h"
#include "tool/model/SettingsLoader.h"
#include "tool/plugin/Manager.h"
#include "tool/plugin/PluginSession.h"
#include "trace/tdf/SectionLayout.h"

namespace stmdcm {

namespace {

constexpr char kScratchCpu[] = "stmdcm";
constexpr char kCaptureExtension[] = ".tdf";
constexpr std::uint64_t kMaxSettingsSize = 16 << 20;
constexpr std::uint64_t kLookedAt = 4096;

}  // namespace

ConfigurationKind ConfigurationSource::KindOfName(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    return ::strcasecmp(extension.c_str(), kCaptureExtension) == 0 ? ConfigurationKind::Capture
                                                                   : ConfigurationKind::Settings;
}

ConfigurationKind ConfigurationSource::KindOf(const std::string& path) {
    const CaptureFile file(path, CaptureFile::Identifier::Optional);
    const bool isNamedCapture = KindOfName(path) == ConfigurationKind::Capture;
    if (file.HasIdentifier() && isNamedCapture) {
        return ConfigurationKind::Capture;
    }
    if (file.HasIdentifier()) {
        throw Failure(fmt::format(
            "{}: this is a capture, but hosts want the name to end in .tdf; rename it, or make a link of such a name",
            path));
    }
    if (isNamedCapture) {
        throw Failure(fmt::format("{}: this is no capture: it does not begin with \"{}\"; if it was one, try recover",
                                  path, Zu::Wep::Trace::TDFIdentifier));
    }
    if (file.Size() > kMaxSettingsSize || file.Read(0, kLookedAt).find('\0') != std::string::npos) {
        throw Failure(fmt::format("{}: this is neither a capture nor settings text", path));
    }
    return ConfigurationKind::Settings;
}

LoadedConfiguration ConfigurationSource::Load(const std::string& path) const {
    const ConfigurationKind kind = KindOf(path);
    Manager manager(m_session.plugin, kScratchCpu);
    return kind == ConfigurationKind::Capture ? CaptureLoader(m_session).Load(path, manager)
                                              : SettingsLoader(m_session).Load(path, manager);
}

LoadedConfiguration ConfigurationSource::Load(const std::string& path, Manager& manager) const {
    return KindOf(path) == ConfigurationKind::Capture ? CaptureLoader(m_session).Load(path, manager)
                                                      : SettingsLoader(m_session).Load(path, manager);
}

}  // namespace stmdcm
