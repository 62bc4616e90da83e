#include "stmdcm/plugin/PluginReading.h"

#include <fmt/format.h>

#include "stmdcm/plugin/HeldConfiguration.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/reading/Comparison.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

std::vector<std::string> DifferencesThroughPlugin(const Plugin& plugin, const Reading& reading) {
    Manager manager(plugin, "stmdcm");
    const bool isCapture = reading.kind == ConfigurationKind::Capture;
    const bool loads = manager.Load(reading.path, isCapture ? TRACE_DATA_FILE_TDF : TRACE_DATA_FILE_LOCAL);
    std::vector<std::string> sentences;
    if (loads != reading.loads) {
        sentences.push_back(fmt::format("{}: the plug-in {} says that loading {}", reading.path, plugin.Path().string(),
                                        loads ? "succeeds" : "fails"));
    }
    if (!reading.isLoaded) {
        return sentences;
    }
    for (const Difference& difference :
         Compare(reading.configuration.WithoutObjectFiles(), ReadConfiguration(manager))) {
        sentences.push_back(difference.Sentence(fmt::format("{} through {}", reading.path, plugin.Path().string())));
    }
    return sentences;
}

}  // namespace stmdcm
