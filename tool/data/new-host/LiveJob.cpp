#include "LiveJob.h"

#include <iostream>
#include <stdexcept>

#include "Log.h"
#include "Properties.h"

void ShowLive(const Plugin& plugin, const std::string& cpuName) {
    Zu::Wep::Trace::CPUInfo cpu{cpuName.c_str(), 0, 0, 0};
    const auto manager = plugin.MakeManager(cpu);
    // The plug-in has the loader find libTraceFactory.so: the target's own, or the simulated one of the tests.
    if (!manager->LoadConfigurationLive()) {
        throw std::runtime_error(cpuName + " can't be loaded from the live target" + SeeLog());
    }
    std::cout << cpuName << '\n';
    PrintProperties(*manager);
}
