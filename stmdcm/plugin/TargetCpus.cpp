#include "stmdcm/plugin/TargetCpus.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <stdlib.h>

#include <memory>

#include "host/CTraceFactory.h"
#include "stmdcm/Failure.h"
#include "stmdcm/plugin/Installation.h"

namespace stmdcm {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

namespace {

struct CloseLibrary {
    void operator()(void* library) const { ::dlclose(library); }
};

template <class Function>
Function* Find(void* library, const char* name) {
    void* symbol = ::dlsym(library, name);
    if (symbol == nullptr) {
        throw Failure(kFactoryFile, fmt::format("this is no trace factory: it has no \"{}\"", name));
    }
    return reinterpret_cast<Function*>(symbol);
}

/// Gives things back in the order in which a manager does.
class Connection {
  public:
    explicit Connection(void* library)
        : m_destroy(Find<void(CTraceFactory*)>(library, "DestroyTraceFactory")),
          m_factory(Find<CTraceFactory*()>(library, "CreateTraceFactory")()) {
        if (m_factory != nullptr) {
            m_factory->CreateChannelServer(m_server, 1);
        }
        if (m_server == nullptr) {
            throw Failure(kFactoryFile, "the trace factory gives no channel server");
        }
    }
    ~Connection() {
        try {
            m_factory->DestroyChannelServer(m_server, 0);
            m_destroy(m_factory);
        } catch (...) {  // as a manager does: there is nothing left to ask of it
            return;
        }
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    CChannelServer& Server() const { return *m_server; }

  private:
    void (*m_destroy)(CTraceFactory*);
    CTraceFactory* m_factory;
    CChannelServer* m_server = nullptr;
};

}  // namespace

fs::path ChooseFactory(const std::string& scenario, const std::string& directory) {
    const char* variable = ::getenv(kScenarioVariable);
    const std::string played = !scenario.empty() || variable == nullptr ? scenario : variable;
    if (!played.empty()) {
        if (!fs::is_regular_file(played)) {
            throw Failure(played, "there is no such file; name a scenario");
        }
        ::setenv(kScenarioVariable, fs::absolute(played).c_str(), 1);
    }
    if (!directory.empty()) {
        return directory;
    }
    return ::getenv(kScenarioVariable) != nullptr ? SimulatorDirectory() : fs::path();
}

std::vector<std::string> TargetCpus(const fs::path& directory) {
    const std::string path = directory.empty() ? kFactoryFile : fs::absolute(directory / kFactoryFile).string();
    const std::unique_ptr<void, CloseLibrary> library(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!library) {
        throw Failure(fmt::format("the trace factory can't be loaded: {}", ::dlerror()));
    }
    std::vector<std::string> cpus;
    try {
        Connection(library.get()).Server().ListCPUs(cpus);
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& error) {  // its text and its type go with the library
        throw Failure(kFactoryFile, fmt::format("the trace factory fails: {}", error.what()));
    }
    return cpus;
}

}  // namespace stmdcm
