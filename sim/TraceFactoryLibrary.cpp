// What libTraceFactory.so exports, and its coming and going.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "host/CTraceFactory.h"
#include "host/vorn/vornError.h"
#include "sim/CallLog.h"
#include "sim/Play.h"
#include "sim/ScenarioReader.h"
#include "sim/SimulatedTraceFactory.h"
#include "stmdcm/reading/Escaped.h"

namespace stmdcm_sim {

namespace {

using Zu::Wep::Trace::CTraceFactory;
using Zu::Wep::Vorn::vornError;

constexpr char kScenarioVariable[] = "STMDCM_SCENARIO";
constexpr char kCreateCall[] = "CreateTraceFactory";

/// "" for none.
std::string Left(std::size_t count, const char* what) {
    return count != 0 ? " with " + std::to_string(count) + " " + what + " left" : std::string();
}

/// Owns the factories, those included that nobody gives back. Shows in the call log that nothing of the library is used
/// after it is gone.
struct LibraryLife {
    LibraryLife() noexcept {
        Tell([] { return std::string("library loaded"); });
    }
    LibraryLife(const LibraryLife&) = delete;
    LibraryLife& operator=(const LibraryLife&) = delete;
    ~LibraryLife() {
        Tell([this] { return "library unloaded" + Left(factories.size(), "factories"); });
    }

    std::vector<std::unique_ptr<SimulatedTraceFactory>> factories;

  private:
    template <class Line>
    static void Tell(Line line) noexcept {
        try {
            CallLog::Write(line());
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
        // A manager tells only that there was an exception.
        std::fprintf(stderr, "libTraceFactory: %s\n", stmdcm::Escaped(error.what()).c_str());
        CallLog::Write(std::string(kCreateCall) + " throws");
        throw;
    }
}

CTraceFactory* Create() {
    std::unique_ptr<Scenario> scenario = ReadNamedScenario();
    Failure failure = scenario->factoryFailure;
    CTraceFactory* factory = nullptr;
    Play(scenario->delay, kCreateCall, failure, [&] {
        libraryLife.factories.push_back(std::make_unique<SimulatedTraceFactory>(std::move(scenario)));
        factory = libraryLife.factories.back().get();
        return std::string();
    });
    return factory;
}

void Destroy(CTraceFactory* factory) {
    auto& own = libraryLife.factories;
    const auto given = std::find_if(own.begin(), own.end(), [&](const auto& one) { return one.get() == factory; });
    const std::size_t left = given != own.end() ? (*given)->ServersLeft() : 0;
    if (given != own.end()) {
        own.erase(given);
    }
    CallLog::Write("DestroyTraceFactory" + Left(left, "channel servers"));
}

}  // namespace

}  // namespace stmdcm_sim

#define SIM_EXPORT extern "C" __attribute__((visibility("default")))

SIM_EXPORT Zu::Wep::Trace::CTraceFactory* CreateTraceFactory() { return stmdcm_sim::Create(); }

SIM_EXPORT void DestroyTraceFactory(Zu::Wep::Trace::CTraceFactory* factory) { stmdcm_sim::Destroy(factory); }
