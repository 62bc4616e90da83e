#include "stmdcm/plugin/LiveConfiguration.h"

#include <fmt/format.h>
#include <fmt/printf.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>

#include "stmdcm/Failure.h"
#include "stmdcm/plugin/HeldConfiguration.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/PluginSession.h"
#include "stmdcm/reading/ObjectFileCheck.h"
#include "trace/dcm/LiveAttributeTable.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::string_view kLoaderError = "uDll: ";
constexpr std::string_view kLoaderDetail = "uDll:  ";
constexpr std::string_view kNoDriver = "STM DCM LoadConfigurationLive: get channel driver failed";
constexpr std::string_view kLiveCpu = "DCM: live system CPU = ";
constexpr std::string_view kLiveFile = "; OutFile=";

/// What the plug-in logs when a step of connecting fails, and what it means.
constexpr struct {
    std::string_view logged;
    const char* sentence;
} kConnectionFailures[] = {
    {"STM DCM: Cannot get Trace Facotry Dll ",
     "the library libTraceFactory.so has no CreateTraceFactory; name the right one's directory with --factory-dir"},
    {"STM DCM: Exception in creating trace factory object ",
     "the trace factory can't be created; check that its target is there, or name a simulated one with --scenario"},
    {"STM DCM: Exception in creating Channel Server ",
     "the trace factory can't create a channel server; check that the target is connected"},
};

std::string WhyNotConnected(const std::vector<PluginMessage>& messages) {
    for (const PluginMessage& message : messages) {
        if (message.StartsWith(kLoaderError) && !message.StartsWith(kLoaderDetail)) {
            return fmt::format("the trace factory can't be loaded: {}; name its directory with --factory-dir",
                               message.text.substr(kLoaderError.size()));
        }
        for (const auto& failure : kConnectionFailures) {
            if (message.StartsWith(failure.logged)) {
                return failure.sentence;
            }
        }
    }
    return "the trace factory gives no channel server; check that the target is connected";
}

/// The constant part of a text for printf.
std::string_view UpToFormat(std::string_view text) { return text.substr(0, text.find('%')); }

/// By what becomes of the property.
constexpr const char* kAfterFailure[] = {"is what it was before", "is 1 instead", "is no instead"};

std::vector<std::string> CpuNames(const std::vector<PluginMessage>& messages) {
    std::vector<std::string> names;
    for (const PluginMessage& message : messages) {
        if (message.StartsWith(kLiveCpu)) {
            names.push_back(message.text.substr(kLiveCpu.size(), message.text.find(kLiveFile) - kLiveCpu.size()));
        }
    }
    return names;
}

/// Has the manager ask the live system; false when what that throws reaches the host.
bool AskForObjectFiles(const Manager& manager) {
    try {
        manager.ObjectFile(manager.CpuName());
        return true;
    } catch (...) {  // the host's own objects may throw anything
        return false;
    }
}

[[noreturn]] void FailWithoutDriver(PluginSession& session, const Manager& manager) {
    AskForObjectFiles(manager);
    const std::vector<std::string> names = CpuNames(session.log.Take());
    throw Failure(
        fmt::format("the live target gives no channel driver for a CPU \"{}\"; {}", manager.CpuName(),
                    names.empty() ? "it lists no CPU" : fmt::format("its CPUs are {}", fmt::join(names, ", "))));
}

}  // namespace

LiveConfiguration LiveConfiguration::Load(PluginSession& session, Manager& manager) {
    LiveConfiguration live;
    live.cpu = manager.CpuName();
    session.log.Take();
    const bool isConnected = manager.LoadLive();
    const std::vector<PluginMessage> messages = session.log.Take();
    if (!isConnected) {
        throw Failure(WhyNotConnected(messages));
    }
    if (std::any_of(messages.begin(), messages.end(),
                    [](const PluginMessage& message) { return message.StartsWith(kNoDriver); })) {
        FailWithoutDriver(session, manager);
    }
    live.AddAttributeDoubts(messages);
    live.configuration = ReadConfiguration(manager);
    live.LoadObjectFiles(session, manager);
    return live;
}

void LiveConfiguration::AddAttributeDoubts(const std::vector<PluginMessage>& messages) {
    // The line of a wrong type names the first attribute whichever it is; its place tells.
    const LiveAttribute* asked = kLiveAttributes.data();
    for (const PluginMessage& message : messages) {
        for (const LiveAttribute& attribute : kLiveAttributes) {
            if (message.StartsWith(fmt::sprintf(kFailureText, attribute.loggedName))) {
                doubts.push_back(fmt::format("the target does not tell \"{}\": {} {}", attribute.name,
                                             attribute.property->name,
                                             kAfterFailure[static_cast<std::size_t>(attribute.onFailure)]));
                asked = &attribute + 1;
            } else if (attribute.valueText != nullptr && message.StartsWith(UpToFormat(attribute.valueText))) {
                asked = &attribute + 1;
            }
        }
        if (message.StartsWith(UpToFormat(kWrongTypeText))) {
            doubts.push_back(
                fmt::format("the target tells \"{}\" in a type that is none of a clock's: {} is what it was "
                            "before",
                            asked->name, asked->property->name));
        }
    }
}

void LiveConfiguration::LoadObjectFiles(PluginSession& session, Manager& manager) {
    const bool isAsked = AskForObjectFiles(manager);
    const std::vector<std::string> names = CpuNames(session.log.Take());
    if (!isAsked || std::find(names.begin(), names.end(), cpu) == names.end()) {
        doubts.push_back(fmt::format("the target does not tell the object files of all CPUs{}",
                                     names.empty() ? "" : fmt::format(", only of {}", fmt::join(names, ", "))));
    }
    // The interface does not list them, but a capture does.
    saved = Read(SaveIntoCapture(session, manager));
    configuration.objectFiles = saved.configuration.objectFiles;
    for (std::string& image : NotLookedAt(configuration.objectFiles)) {
        doubts.push_back(std::move(image));
    }
}

}  // namespace stmdcm
