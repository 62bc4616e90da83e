// The connection to the live system. The host's side of it is host/CTraceFactory.h.

#include <algorithm>
#include <utility>

#include "host/vorn/vornError.h"
#include "source_utilities/Log.h"
#include "source_utilities/source_utilities_error.h"
#include "trace/dcm/CDeviceConfigManagerCommon.h"
#include "trace/dcm/ModificationTime.h"

namespace Zu::Wep::Trace {

namespace {

constexpr char kFactoryLibrary[] = "TraceFactory";
constexpr char kCreateFactory[] = "CreateTraceFactory";
constexpr char kDestroyFactory[] = "DestroyTraceFactory";

// What the managers pass for the factory's mode arguments.
constexpr int kCreateMode = 1;
constexpr int kDestroyMode = 0;

using CreateFactoryFunction = CTraceFactory* (*)();
using DestroyFactoryFunction = void (*)(CTraceFactory*);

/// One step of giving back: the manager ends whatever the host's objects do, and the next step is taken all the same.
template <class Step>
void Attempt(Step step) noexcept {
    try {
        step();
    } catch (...) {
        return;
    }
}

}  // namespace

bool CDeviceConfigManagerCommon::ConnectLiveSystem() {
    if (m_channelServer != nullptr) {
        return true;
    }
    ZU_WEP::Log(ZU_WEP::LogInformation, "DCM: Loading factory DLL - %s ", kFactoryLibrary);
    if (m_traceFactory == nullptr && LoadFactoryLibrary() && !CreateTraceFactory()) {
        return false;
    }
    return m_traceFactory != nullptr && CreateChannelServer();
}

bool CDeviceConfigManagerCommon::LoadFactoryLibrary() {
    try {
        return m_factoryLibrary.FindAndLoad(kFactoryLibrary, -1);
    } catch (const ZU_WEP::source_utilities_error&) {  // the working directory is gone
        return false;
    }
}

bool CDeviceConfigManagerCommon::CreateTraceFactory() {
    const auto create = reinterpret_cast<CreateFactoryFunction>(m_factoryLibrary.GetSymbolAddress(kCreateFactory));
    if (create == nullptr) {
        ZU_WEP::Log(ZU_WEP::LogError, "STM DCM: Cannot get Trace Facotry Dll ");  // so spelled in docs/host-guide.md
        return false;
    }
    ZU_WEP::Log(ZU_WEP::LogInformation, "STM DCM: Creating Trace factory");
    try {
        m_traceFactory = create();
        return true;
    } catch (...) {
        ZU_WEP::Log(ZU_WEP::LogError, "STM DCM: Exception in creating trace factory object ");
        return false;
    }
}

bool CDeviceConfigManagerCommon::CreateChannelServer() {
    try {
        m_traceFactory->CreateChannelServer(m_channelServer, kCreateMode);
        ZU_WEP::Log(ZU_WEP::LogInformation,
                    "stm DCM: Done -creating/Connecting Channel Server ");  // lower case: readers of logs know it so
        return m_channelServer != nullptr;
    } catch (...) {
        ZU_WEP::Log(ZU_WEP::LogError, "STM DCM: Exception in creating Channel Server ");
        return false;
    }
}

void CDeviceConfigManagerCommon::GetLiveSystemObjectFiles() {
    if (m_channelServer == nullptr) {
        return;
    }
    std::vector<std::string> cpus;
    m_channelServer->ListCPUs(cpus);
    try {
        for (const std::string& cpu : cpus) {
            UpdateLiveObjectFile(cpu);
        }
    } catch (const Vorn::vornErrorIF&) {
        // What was brought up to date before stays so.
    }
}

void CDeviceConfigManagerCommon::UpdateLiveObjectFile(const std::string& cpu) {
    m_objectFilePath.clear();
    m_channelServer->GetObjectFile(cpu, m_objectFilePath);
    ZU_WEP::Log(ZU_WEP::LogInformation, "DCM: live system CPU = %s; OutFile=%s", cpu.c_str(), m_objectFilePath.c_str());
    const std::int64_t modified = ModificationTime(m_objectFilePath).value_or(0);
    const auto known = std::find(m_objectFileNames.begin(), m_objectFileNames.end(), cpu);
    if (known == m_objectFileNames.end()) {
        AddObjectFile(cpu, m_objectFilePath, modified);
        return;
    }
    FILE_Info& file = *m_objectFiles[static_cast<std::size_t>(known - m_objectFileNames.begin())];
    file.fileName = m_objectFilePath;
    file.timeStamp = modified;
}

void CDeviceConfigManagerCommon::DisconnectLiveSystem() noexcept {
    if (m_channelServer == nullptr || m_traceFactory == nullptr) {
        return;  // hosts get a factory back only together with its server (docs/host-guide.md)
    }
    ZU_WEP::Log(ZU_WEP::LogInformation, "DCM: Destroying Channel Server ");
    CChannelServer* const server = std::exchange(m_channelServer, nullptr);
    Attempt([&] { m_traceFactory->DestroyChannelServer(server, kDestroyMode); });
    Attempt([&] {
        const auto destroy =
            reinterpret_cast<DestroyFactoryFunction>(m_factoryLibrary.GetSymbolAddress(kDestroyFactory));
        if (destroy != nullptr) {
            destroy(m_traceFactory);
        }
    });
    m_traceFactory = nullptr;
}

}  // namespace Zu::Wep::Trace
