#include "host/check/ManagerProxy.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "host/check/RealLibrary.h"

namespace stmdcm_check {

using namespace Zu::Wep::Trace;

namespace {

struct Managers {
    std::mutex lock;
    std::vector<ManagerProxy*> all;  ///< dead ones, too
    unsigned int last = 0;
};

/// As long as the outputs, see Output.cpp.
Managers& AllManagers() {
    static auto* const managers = MakeKept<Managers>();
    return *managers;
}

std::string NextName(const CPUInfo* cpu) {
    const std::lock_guard lock(AllManagers().lock);
    return "manager " + std::to_string(++AllManagers().last) + " (" + (cpu->name != nullptr ? cpu->name : "") + ")";
}

JsonObject FileArguments(const std::string& fileName, eTraceDataFileType type) {
    return JsonObject().Add("fileName", fileName).Add("type", static_cast<int>(type));
}

/// Does something when a block is left, however that is.
template <class Work>
class AtEnd {
  public:
    explicit AtEnd(Work work) : m_work(work) {}
    ~AtEnd() { m_work(); }
    AtEnd(const AtEnd&) = delete;
    AtEnd& operator=(const AtEnd&) = delete;

  private:
    Work m_work;
};

}  // namespace

ManagerProxy::ManagerProxy(const CPUInfo* cpu, CDeviceIdentifier* identifier, const HostCall& call)
    : m_life{NextName(cpu), call.Name(), ""}, m_cpu(cpu), m_events(m_life), m_identifier(m_life, identifier) {}

ManagerProxy* ManagerProxy::Make(HostCall& call, CPUInfo* cpu, CDeviceIdentifier* identifier) {
    auto* const manager = MakeKept<ManagerProxy>(cpu, identifier, call);
    void* const real = RealLibrary::Create()(cpu, manager->m_identifier.ForLibrary());
    if (real == nullptr) {
        return nullptr;
    }
    // Every manager is one (trace/dcm/DeviceConfigManager.h).
    manager->m_real = static_cast<StmDeviceConfigManagerIF*>(static_cast<CDeviceConfigManager*>(real));
    const std::lock_guard lock(AllManagers().lock);
    AllManagers().all.push_back(manager);
    call.NameResult(manager->m_life.name);
    return manager;
}

void ManagerProxy::Destroy(HostCall& call, CDeviceConfigManager* manager) {
    ManagerProxy* known = nullptr;
    {
        const std::lock_guard lock(AllManagers().lock);
        const auto found = std::find(AllManagers().all.begin(), AllManagers().all.end(), manager);
        known = found != AllManagers().all.end() ? *found : nullptr;
    }
    if (known != nullptr) {
        known->End(call);
    } else {
        PassOn(call, "this is no manager of this library", [] {});
    }
}

std::size_t ManagerProxy::TellAlive(const std::string& when) {
    std::size_t count = 0;
    const std::lock_guard lock(AllManagers().lock);
    for (const ManagerProxy* manager : AllManagers().all) {
        if (manager->m_life.ended.empty()) {
            ++count;
            Tell(when + ": " + manager->m_life.name + ", made by " + manager->m_life.made + ", was never destroyed");
        }
    }
    return count;
}

void ManagerProxy::operator delete(ManagerProxy* self, std::destroying_delete_t) {
    HostCall call("delete", self->m_life.name, {});
    call.Tell("a manager is not for its host to delete; DestroyDeviceConfigManager ends it");
    self->End(call);
}

void ManagerProxy::End(HostCall& call) {
    PassOn(call, m_life.Objection(), [&] {
        RecordsChanged(call);
        m_life.ended = call.Name();
        if (m_life.openCalls == 0) {
            EndReal();
        } else {
            call.Tell("the manager is in a call still; it ends behind that");
        }
    });
}

void ManagerProxy::EndReal() { RealLibrary::Destroy()(std::exchange(m_real, nullptr)); }

void ManagerProxy::RecordsChanged(const HostCall& call) {
    m_sc.Changed(call);
    m_cpt.Changed(call);
    m_pmi.Changed(call);
}

template <class Work>
auto ManagerProxy::Do(const char* operation, const JsonObject& arguments, Work work, const std::string& fault) const {
    HostCall call(operation, m_life.name, arguments);
    if (!fault.empty()) {
        call.Tell(fault);
    }
    ++m_life.openCalls;
    const AtEnd leave([this] {
        if (--m_life.openCalls == 0 && !m_life.ended.empty() && m_real != nullptr) {
            const_cast<ManagerProxy*>(this)->EndReal();
        }
    });
    return PassOn(call, m_life.Objection(), [&] {
        m_sc.Settle();
        return work(call);
    });
}

template <class Work>
auto ManagerProxy::Change(const char* operation, const JsonObject& arguments, Work work, const std::string& fault) {
    const auto change = [&](HostCall& call) {
        RecordsChanged(call);
        const AtEnd changed([&] { RecordsChanged(call); });  // what a callback borrowed meanwhile
        return work();
    };
    return Do(operation, arguments, change, fault);
}

void ManagerProxy::RegisterEventHandler(CDeviceConfigEvents* handler) {
    Do("RegisterEventHandler", JsonObject().Add("isNull", handler == nullptr),
       [&](HostCall&) { m_real->RegisterEventHandler(m_events.For(handler)); });
}

bool ManagerProxy::GetInfo(int& deviceId, int& cpuId, std::string& name) {
    const auto work = [&](HostCall& call) {
        const bool result = m_real->GetInfo(deviceId, cpuId, name);
        call.Given().Add("deviceId", deviceId).Add("cpuId", cpuId).Add("name", name);
        return result;
    };
    return Do("GetInfo", {}, work, CpuFault());
}

bool ManagerProxy::LoadConfigurationLive() {
    return Change(
        "LoadConfigurationLive", {}, [&] { return m_real->LoadConfigurationLive(); }, CpuFault());
}

bool ManagerProxy::LoadConfiguration(const std::string& fileName, eTraceDataFileType type) {
    return Change(
        "LoadConfiguration", FileArguments(fileName, type), [&] { return m_real->LoadConfiguration(fileName, type); },
        FaultOf(type));
}

bool ManagerProxy::SaveConfiguration(const std::string& fileName, eTraceDataFileType type) {
    return Do(
        "SaveConfiguration", FileArguments(fileName, type),
        [&](HostCall&) { return m_real->SaveConfiguration(fileName, type); }, FaultOf(type));
}

bool ManagerProxy::GetProperty(const std::string& name, ConfigPropertyValue& value) {
    return Do("GetProperty", JsonObject().Add("name", name), [&](HostCall& call) {
        const bool result = m_real->GetProperty(name, value);
        call.Given().Add("value", value);
        return result;
    });
}

bool ManagerProxy::GetObjectFile(const std::string& name, std::string& objectFile) {
    return Do("GetObjectFile", JsonObject().Add("name", name), [&](HostCall& call) {
        const bool result = m_real->GetObjectFile(name, objectFile);
        call.Given().Add("objectFile", objectFile);
        return result;
    });
}

std::string ManagerProxy::GetLastError() const {
    return Do("GetLastError", {}, [&](HostCall&) { return m_real->GetLastError(); });
}

bool ManagerProxy::SetSTMProperty(const std::string& name, ConfigPropertyValue& value) {
    return Do(
        "SetSTMProperty", JsonObject().Add("name", name).Add("value", value),
        [&](HostCall&) { return m_real->SetSTMProperty(name, value); }, FaultOf(name, value));
}

void ManagerProxy::SaveAllConfiguration() {
    Do(
        "SaveAllConfiguration", {}, [&](HostCall&) { m_real->SaveAllConfiguration(); }, CpuFault());
}

void ManagerProxy::RetrieveAllConfiguration() {
    Change(
        "RetrieveAllConfiguration", {}, [&] { m_real->RetrieveAllConfiguration(); }, CpuFault());
}

/// A manager that has ended gives its record, too: a host uses that without a look.
template <class Record>
auto ManagerProxy::GetRecord(const char* operation, Record& record, auto get) {
    Do(operation, {}, [&](HostCall&) { record.Of((m_real->*get)()); });
    return &record;
}

UsecaseRecordIF* ManagerProxy::GetUsecaseRecord() {
    return GetRecord("GetUsecaseRecord", m_sc, &StmDeviceConfigManagerIF::GetUsecaseRecord);
}

CTUsecaseRecordIF* ManagerProxy::GetCTUsecaseRecord() {
    return GetRecord("GetCTUsecaseRecord", m_cpt, &StmDeviceConfigManagerIF::GetCTUsecaseRecord);
}

PMIUsecaseRecordIF* ManagerProxy::GetPMIUsecaseRecord() {
    return GetRecord("GetPMIUsecaseRecord", m_pmi, &StmDeviceConfigManagerIF::GetPMIUsecaseRecord);
}

}  // namespace stmdcm_check
