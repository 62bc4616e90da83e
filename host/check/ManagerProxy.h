#pragma once

#include <new>
#include <string>

#include "host/CPUInfo.h"
#include "host/check/HostObjects.h"
#include "host/check/RecordProxy.h"
#include "host/check/Rules.h"
#include "trace/dcm/StmDeviceConfigManagerIF.h"

namespace stmdcm_check {

/// A manager of the real library as the host gets it.
class ManagerProxy final : public Zu::Wep::Trace::StmDeviceConfigManagerIF {
  public:
    using CDeviceConfigManager = Zu::Wep::Trace::CDeviceConfigManager;

    /// What CreateDeviceConfigManager does for a CPU that is not null. Null when the real library makes none.
    static ManagerProxy* Make(HostCall& call, Zu::Wep::Trace::CPUInfo* cpu,
                              Zu::Wep::Trace::CDeviceIdentifier* identifier);
    /// What DestroyDeviceConfigManager does.
    static void Destroy(HostCall& call, CDeviceConfigManager* manager);
    /// How many are alive; each is told.
    static std::size_t TellAlive(const std::string& when);

    ManagerProxy(const Zu::Wep::Trace::CPUInfo* cpu, Zu::Wep::Trace::CDeviceIdentifier* identifier,
                 const HostCall& call);
    static void operator delete(ManagerProxy* self, std::destroying_delete_t);

    void RegisterEventHandler(Zu::Wep::Trace::CDeviceConfigEvents* handler) override;
    bool GetInfo(int& deviceId, int& cpuId, std::string& name) override;
    bool LoadConfigurationLive() override;
    bool LoadConfiguration(const std::string& fileName, Zu::Wep::Trace::eTraceDataFileType type) override;
    bool SaveConfiguration(const std::string& fileName, Zu::Wep::Trace::eTraceDataFileType type) override;
    bool GetProperty(const std::string& name, Zu::Wep::Trace::ConfigPropertyValue& value) override;
    bool GetObjectFile(const std::string& name, std::string& objectFile) override;
    std::string GetLastError() const override;
    bool SetSTMProperty(const std::string& name, Zu::Wep::Trace::ConfigPropertyValue& value) override;
    void SaveAllConfiguration() override;
    void RetrieveAllConfiguration() override;
    Zu::Wep::Trace::UsecaseRecordIF* GetUsecaseRecord() override;
    Zu::Wep::Trace::CTUsecaseRecordIF* GetCTUsecaseRecord() override;
    Zu::Wep::Trace::PMIUsecaseRecordIF* GetPMIUsecaseRecord() override;

  private:
    /// Passes a call on: `work()`. `fault`: what is wrong with the arguments, which is told alone.
    template <class Work>
    auto Do(const char* operation, const JsonObject& arguments, Work work, const std::string& fault = "") const;
    /// The same for one that may change the records.
    template <class Work>
    auto Change(const char* operation, const JsonObject& arguments, Work work, const std::string& fault = "");
    template <class Record>
    auto GetRecord(const char* operation, Record& record, auto get);
    std::string CpuFault() const { return m_life.ended.empty() ? m_cpu.Fault() : ""; }
    void RecordsChanged(const HostCall& call);
    /// At once, or behind the call that is under way.
    void End(HostCall& call);
    void EndReal();

    mutable ManagerLife m_life;
    CpuAsMade m_cpu;
    EventsProxy m_events;
    IdentifierProxy m_identifier;
    Zu::Wep::Trace::StmDeviceConfigManagerIF* m_real = nullptr;  ///< null behind its end
    RecordProxy<Zu::Wep::Trace::UsecaseRecordIF, ScUsecaseProxy> m_sc{m_life, "SC"};
    RecordProxy<Zu::Wep::Trace::CTUsecaseRecordIF, CptUsecaseProxy> m_cpt{m_life, "CPT"};
    RecordProxy<Zu::Wep::Trace::PMIUsecaseRecordIF, PmiUsecaseProxy> m_pmi{m_life, "PMI/CMI"};
};

}  // namespace stmdcm_check
