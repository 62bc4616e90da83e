#include "tool/commands/OtherPlugin.h"

#include "stmdcm/plugin/Plugin.h"
#include "stmdcm/plugin/PluginReading.h"
#include "tool/output/GuardedHome.h"
#include "tool/output/InputFile.h"

namespace stmdcm {

struct OtherPlugin::Loaded {
    explicit Loaded(const std::string& file)
        : plugin(home.WithNames([&] { return std::make_unique<Plugin>(home, file); })) {}

    GuardedHome home;
    std::unique_ptr<Plugin> plugin;
};

std::vector<std::string> OtherPlugin::Differences(const Context& context, const Reading& reading) {
    if (context.options.plugin.empty() || !reading.kind) {
        return {};
    }
    if (reading.path == kStandardStream) {
        throw Failure("--plugin needs a file, standard input is none; name one", Failure::Kind::Request);
    }
    if (!m_loaded) {
        m_loaded = std::make_shared<Loaded>(context.options.plugin);
    }
    return m_loaded->home.WithNames([&] { return DifferencesThroughPlugin(*m_loaded->plugin, reading); });
}

}  // namespace stmdcm
