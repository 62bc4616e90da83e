// What libTraceFactory.so exports, and its coming and going.

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "host/CTraceFactory.h"
#include "host/vorn/vornError.h"
#include "sim/CallLog.h"
#include "sim/Play.h"
#include "sim/ScenarioReader.h"
#include "sim/SimulatedTraceFactory.h"

namespace stmdcm_sim {

namespace {

using Zu::Wep::Trace::CTraceFactory;
using Zu::Wep::Vorn::vornError;

constexpr char kScenarioVariable[] = "STMDCM_SCENARIO";
constexpr char kCreateCall[] = "CreateTraceFactory";

/// Shows in the call log that nothing of the library is used after it is gone.
const struct LibraryLife {
    LibraryLife() noexcept { Tell("library loaded"); }
    LibraryLife(const LibraryLife&) = delete;
    LibraryLife& operator=(const LibraryLife&) = delete;
    ~LibraryLife() { Tell("library unloaded"); }

  private:
    static void Tell(const char* what) noexcept {
        try {
            CallLog::Write(what);
        } catch (const std::exception&) {
            return;  // a line less
        }
    }
} libraryLife;

std::unique_ptr<Scenario> ReadNamedScenario() {
    try {
        const char* path = std::getenv(kScenarioVariable);
        if (path == nullptr || *path == '\0') {
            throw vornError(std::string(kScenarioVariable) + " names no scenario file", vornError::Severity_Error);
        }
        return ReadScenario(path);
    } catch (const vornError& error) {
        std::fprintf(stderr, "libTraceFactory: %s\n",
                     error.what());  // a manager tells only that there was an exception
        CallLog::Write(std::string(kCreateCall) + " throws");
        throw;
    }
}

CTraceFactory* Create() {
    std::unique_ptr<Scenario> scenario = ReadNamedScenario();
    Failure failure = scenario->factoryFailure;
    CTraceFactory* factory = nullptr;
    Play(scenario->delay, kCreateCall, failure, [&] {
        factory = std::make_unique<SimulatedTraceFactory>(std::move(scenario)).release();
        return std::string();
    });
    return factory;
}

void Destroy(CTraceFactory* factory) {
    const std::unique_ptr<SimulatedTraceFactory> own(static_cast<SimulatedTraceFactory*>(factory));
    const std::size_t left = own != nullptr ? own->ServersLeft() : 0;
    CallLog::Write("DestroyTraceFactory" +
                   (left != 0 ? " with " + std::to_string(left) + " channel servers left" : std::string()));
}

}  // namespace

}  // namespace stmdcm_sim

#define SIM_EXPORT extern "C" __attribute__((visibility("default")))

SIM_EXPORT Zu::Wep::Trace::CTraceFactory* CreateTraceFactory() { return stmdcm_sim::Create(); }

SIM_EXPORT void DestroyTraceFactory(Zu::Wep::Trace::CTraceFactory* factory) { stmdcm_sim::Destroy(factory); }
