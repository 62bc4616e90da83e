// A libTraceFactory.so that stands in front of a real one, passes every call on and records what came of it as a
// scenario (docs/scenario.md, "Recording").

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <list>
#include <memory>
#include <string>

#include "host/CTraceFactory.h"
#include "host/vorn/vornError.h"
#include "sim/record/Recording.h"
#include "stmdcm/reading/Escaped.h"

#define SIM_EXPORT extern "C" __attribute__((visibility("default")))

SIM_EXPORT Zu::Wep::Trace::CTraceFactory* CreateTraceFactory();

namespace stmdcm_sim {

namespace {

using namespace Zu::Wep::Trace;
using Zu::Wep::Vorn::vornError;

constexpr char kFactoryVariable[] = "STMDCM_RECORD_FACTORY";
constexpr char kFileVariable[] = "STMDCM_RECORD_FILE";

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

struct CloseLibrary {
    void operator()(void* library) const { ::dlclose(library); }
};

/// Of the process.
Recording recording;
std::unique_ptr<void, CloseLibrary> real;

/// No scenario can say that a call both gave something and failed.
void RemarkIf(bool isGiven, const char* what) {
    if (isGiven) {
        recording.Remark(std::string(what) + " was given by a call that failed at once; it is left out");
    }
}

/// Calls the real target: `work()`, which gives whether there is anything. What comes of it goes into `failures`.
template <class Work>
void Pass(Steps& failures, Work work) {
    try {
        failures.Add(work() ? StepOfSuccess() : StepOfNothing());
    } catch (...) {
        failures.Add(StepOfException());
        recording.Write(Variable(kFileVariable));
        throw;
    }
    recording.Write(Variable(kFileVariable));
}

class RecordingDriver final : public CChannelDriver {
  public:
    RecordingDriver(CChannelDriver* driver, std::string cpu) : m_real(driver), m_cpu(std::move(cpu)) {}

    void GetAttribute(const char* name, ChannelAttribute& value) override {
        const ChannelAttribute before = value;
        const std::string textBefore = before.text != nullptr ? before.text : "";
        Steps::Json answer = Steps::Json::object();
        try {
            m_real->GetAttribute(name, value);
            answer = AnswerOf(before, textBefore, value);
        } catch (...) {
            answer["fails"] = StepOfException();
            RemarkIf(value.type != before.type || value.text != before.text, "an attribute");
            Note(name, answer);
            throw;
        }
        Note(name, answer);
    }

    CChannelDriver* Real() const { return m_real; }
    const std::string& Cpu() const { return m_cpu; }

  private:
    /// What the driver left alone is not told apart from what it set to the same again, which comes to the same.
    static Steps::Json AnswerOf(const ChannelAttribute& before, const std::string& textBefore,
                                const ChannelAttribute& after) {
        const bool isTextSet = after.text != before.text || (after.text != nullptr && after.text != textBefore);
        Steps::Json answer = Steps::Json::object();
        if (isTextSet || after.type != before.type) {
            answer["type"] = TypeOf(after.type);
        }
        if (isTextSet) {
            answer["text"] = after.text != nullptr ? Steps::Json(after.text) : Steps::Json();
        }
        return answer;
    }
    /// As a scenario names it.
    static Steps::Json TypeOf(std::int32_t type) {
        switch (type) {
            case ChannelAttribute::Flag:
                return "flag";
            case ChannelAttribute::Integer:
                return "integer";
            case ChannelAttribute::Double:
                return "double";
            default:
                return type;
        }
    }
    void Note(const char* name, const Steps::Json& answer) const {
        recording.Cpu(m_cpu).Attribute(name).Add(answer);
        recording.Write(Variable(kFileVariable));
    }

    CChannelDriver* m_real;
    std::string m_cpu;
};

class RecordingServer final : public CChannelServer {
  public:
    explicit RecordingServer(CChannelServer* server) : m_real(server) {}

    void GetObjectFile(const std::string& cpu, std::string& objectFile) override {
        Pass(recording.Cpu(cpu).objectFileFailures, [&] {
            const std::string before = objectFile;
            try {
                m_real->GetObjectFile(cpu, objectFile);
            } catch (...) {
                RemarkIf(objectFile != before, "an object file");
                throw;
            }
            recording.Cpu(cpu).objectFiles.push_back(objectFile);
            return true;
        });
    }
    void GetChannelDriver(const std::string& cpu, CChannelDriver*& driver) override {
        Pass(recording.Cpu(cpu).driverFailures, [&] {
            CChannelDriver* given = RealOf(driver);
            const auto give = [&] { driver = given != nullptr ? &ProxyOf(given, cpu) : nullptr; };
            try {
                m_real->GetChannelDriver(cpu, given);
            } catch (...) {
                RemarkIf(given != RealOf(driver), "a driver");
                give();
                throw;
            }
            give();
            return given != nullptr;
        });
    }
    void ListCPUs(std::vector<std::string>& cpus) override {
        Pass(recording.listFailures, [&] {
            const std::vector<std::string> before = cpus;
            try {
                m_real->ListCPUs(cpus);
            } catch (...) {
                RemarkIf(cpus != before, "a list of CPUs");
                throw;
            }
            recording.AddList(cpus);
            return true;
        });
    }

    CChannelServer* Real() const { return m_real; }

  private:
    CChannelDriver* RealOf(const CChannelDriver* proxy) const {
        for (const RecordingDriver& driver : m_drivers) {
            if (&driver == proxy) {
                return driver.Real();
            }
        }
        return nullptr;
    }
    RecordingDriver& ProxyOf(CChannelDriver* driver, const std::string& cpu) {
        for (RecordingDriver& known : m_drivers) {
            if (known.Real() == driver && known.Cpu() == cpu) {
                return known;
            }
        }
        return m_drivers.emplace_back(driver, cpu);
    }

    CChannelServer* m_real;
    std::list<RecordingDriver> m_drivers;  ///< the addresses stay
};

class RecordingFactory final : public CTraceFactory {
  public:
    explicit RecordingFactory(CTraceFactory* factory) : m_real(factory) {}

    void CreateChannelServer(CChannelServer*& server, int mode) override {
        Pass(recording.serverFailures, [&] {
            CChannelServer* given = nullptr;
            const auto give = [&] { server = given != nullptr ? &m_servers.emplace_back(given) : server; };
            try {
                m_real->CreateChannelServer(given, mode);
            } catch (...) {
                RemarkIf(given != nullptr, "a channel server");
                give();
                throw;
            }
            give();
            return given != nullptr;
        });
    }
    void DestroyChannelServer(CChannelServer* server, int mode) override {
        Pass(recording.serverEndFailures, [&] {
            m_real->DestroyChannelServer(static_cast<RecordingServer*>(server)->Real(), mode);
            return true;
        });
    }

    CTraceFactory* Real() const { return m_real; }

  private:
    CTraceFactory* m_real;
    std::list<RecordingServer> m_servers;  ///< the addresses stay
};

std::list<RecordingFactory> factories;  ///< the addresses stay

template <class Function>
Function* Find(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(real.get(), name));
}

/// Throws when there is no real factory.
CTraceFactory* (*LoadReal())() {
    const std::string path = Variable(kFactoryVariable);
    if (!real && !path.empty()) {
        real.reset(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    }
    auto* const create = real ? Find<CTraceFactory*()>("CreateTraceFactory") : nullptr;
    if (create == nullptr || create == &CreateTraceFactory) {
        const std::string reason = create != nullptr ? path + " is the recorder itself"
                                   : real            ? path + " has no CreateTraceFactory"
                                   : path.empty()    ? std::string(kFactoryVariable) + " is not set"
                                                     : std::string(::dlerror());
        std::fprintf(stderr, "libTraceFactory: there is nothing to record: %s\n", stmdcm::Escaped(reason).c_str());
        throw vornError(reason, vornError::Severity_Error);
    }
    return create;
}

CTraceFactory* Create() {
    auto* const create = LoadReal();
    CTraceFactory* given = nullptr;
    Pass(recording.factoryFailures, [&] { return (given = create()) != nullptr; });
    return given != nullptr ? &factories.emplace_back(given) : nullptr;
}

void Destroy(CTraceFactory* factory) {
    auto* const destroy = Find<void(CTraceFactory*)>("DestroyTraceFactory");
    if (destroy != nullptr) {
        destroy(static_cast<RecordingFactory*>(factory)->Real());
    }
}

}  // namespace

}  // namespace stmdcm_sim

SIM_EXPORT Zu::Wep::Trace::CTraceFactory* CreateTraceFactory() { return stmdcm_sim::Create(); }

SIM_EXPORT void DestroyTraceFactory(Zu::Wep::Trace::CTraceFactory* factory) { stmdcm_sim::Destroy(factory); }
