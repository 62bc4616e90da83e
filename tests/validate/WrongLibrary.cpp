// The real plug-in behind entry points that do one thing otherwise: what the library's own file name says, such as
// "null-cpu.so". With any other name it changes nothing.

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "trace/dcm/DeviceConfigManager.h"
#include "trace/dcm/PropertyNames.h"
#include "trace/dcm/StmDeviceConfigManagerIF.h"

using namespace Zu::Wep::Trace;
namespace fs = std::filesystem;

#ifdef STMDCM_WRONG_EXPORT
extern "C" STMDCM_EXPORT void SomethingElse() {}
#endif

namespace {

bool Is(const std::string& fault) {
    Dl_info info;
    ::dladdr(reinterpret_cast<void*>(&Is), &info);
    return fs::path(info.dli_fname).stem() == fault;
}

template <class Function>
Function Real(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

std::string Settings() { return std::string(std::getenv("HOME")) + "/.ZU-trace/settings/"; }

/// Changes a byte of the first section's payload.
void Tamper(const std::string& path) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(4 + 12 + 10);
    file.put('!');
}

/// Asks twice, or lets nothing out.
struct WrongHandler final : CDeviceConfigEvents {
    void OnUpdateObjectFile(const std::string& file, bool timeStampChanged, std::string& newFile) override {
        if (host == nullptr) {
            return;
        }
        try {
            host->OnUpdateObjectFile(file, timeStampChanged, newFile);
        } catch (...) {
            if (!Is("handler-swallowed")) {
                throw;
            }
        }
        if (Is("asks-twice")) {
            host->OnUpdateObjectFile(file, timeStampChanged, newFile);
        }
    }
    CDeviceConfigEvents* host = nullptr;
};

struct WrongRecord final : UsecaseRecordIF {
    unsigned int GetNumUsecases() const override { return real->GetNumUsecases(); }
    void RemoveUsecase(int selector) override { real->RemoveUsecase(Is("removes-next-job") ? selector + 1 : selector); }
    void CleaupUsecases(bool keep) override { real->CleaupUsecases(keep && !Is("cleans-all")); }
    void AddUsecase(const UsecaseInfoIF* usecase) override { real->AddUsecase(usecase); }
    UsecaseInfoIF* GetUsecase(unsigned int index) override {
        return real->GetUsecase(Is("counts-from-one") ? index - 1 : index);
    }
    UsecaseInfoIF* GetAUsecaseInfo() override {
        UsecaseInfoIF* const info = real->GetAUsecaseInfo();
        if (Is("scratch-not-reset")) {
            info->SetModuleName("old");
        }
        return info;
    }
    int SaveAllRecords(std::string& out) const override {
        if (Is("saves-over")) {
            out.clear();
        }
        return real->SaveAllRecords(out);
    }
    int RetrieveAllRecords(std::istringstream& in) override { return real->RetrieveAllRecords(in); }
    UsecaseRecordIF* real = nullptr;
};

class WrongManager final : public StmDeviceConfigManagerIF {
  public:
    explicit WrongManager(void* real)
        : m_real(static_cast<StmDeviceConfigManagerIF*>(static_cast<CDeviceConfigManager*>(real))) {
        m_record.real = m_real->GetUsecaseRecord();
        m_real->RegisterEventHandler(nullptr);
    }
    ~WrongManager() override { Real<void (*)(CDeviceConfigManager*)>("DestroyDeviceConfigManager")(m_real); }

    void RegisterEventHandler(CDeviceConfigEvents* handler) override {
        m_handler.host = handler;
        m_real->RegisterEventHandler(handler == nullptr ? nullptr : &m_handler);
    }
    bool GetInfo(int& deviceId, int& cpuId, std::string& name) override {
        return m_real->GetInfo(Is("swaps-ids") ? cpuId : deviceId, Is("swaps-ids") ? deviceId : cpuId, name);
    }
    bool LoadConfigurationLive() override { return m_real->LoadConfigurationLive() || Is("live-always"); }
    bool LoadConfiguration(const std::string& file, eTraceDataFileType type) override {
        struct stat info {};
        if (Is("waits-for-pipes") && ::stat(file.c_str(), &info) == 0 && S_ISFIFO(info.st_mode)) {
            ::pause();
        }
        const bool result = m_real->LoadConfiguration(file, type);
        return result || (Is("text-always-loads") && type == TRACE_DATA_FILE_LOCAL && fs::is_regular_file(file)) ||
               (Is("needs-no-device") && type == TRACE_DATA_FILE_TDF && fs::is_regular_file(file));
    }
    bool SaveConfiguration(const std::string& file, eTraceDataFileType type) override {
        if (Is("makes-captures") && type == TRACE_DATA_FILE_TDF && !fs::exists(file)) {
            std::ofstream(file) << "TDF2";
        }
        if (Is("keeps-descriptors")) {
            ::dup(STDERR_FILENO);
        }
        if (Is("leaves-files")) {
            std::ofstream(Settings() + "left");
        }
        const bool result = Save(file, type);
        if (Is("foreign-byte") && result && type == TRACE_DATA_FILE_TDF) {
            Tamper(file);
        }
        return result || Is("full-unnoticed");
    }
    bool GetProperty(const std::string& name, ConfigPropertyValue& value) override {
        if (Is("aborts") && name.empty()) {
            std::abort();
        }
        const bool result = m_real->GetProperty(name, value);
        if (Is("flags-are-integers") && result) {
            value.type = ConfigPropertyValue::Integer;
        }
        if (Is("fills-the-text")) {
            value.text = name;
        }
        return result || Is("knows-every-name");
    }
    bool GetObjectFile(const std::string& name, std::string& file) override {
        return m_real->GetObjectFile(Is("names-in-lower-case") ? "core0" : name, file);
    }
    std::string GetLastError() const override { return Is("has-an-error") ? "failed" : m_real->GetLastError(); }
    bool SetSTMProperty(const std::string& name, ConfigPropertyValue& value) override {
        ConfigPropertyValue own = value;
        if (Is("converts-reals") && value.type == 6) {
            own = ConfigPropertyValue(static_cast<std::int32_t>(value.value.real));
        }
        if (Is("import-by-integer") && name == PropertyNames::STM_VornLib_Import) {
            own = ConfigPropertyValue(value.value.integer != 0);
        }
        return m_real->SetSTMProperty(name, own) || (Is("sets-the-constant") && name == "CycleModeDelta");
    }
    void SaveAllConfiguration() override { m_real->SaveAllConfiguration(); }
    void RetrieveAllConfiguration() override {
        if (Is("exits")) {
            ::_exit(0);
        }
        m_real->RetrieveAllConfiguration();
    }
    UsecaseRecordIF* GetUsecaseRecord() override { return &m_record; }
    CTUsecaseRecordIF* GetCTUsecaseRecord() override { return m_real->GetCTUsecaseRecord(); }
    PMIUsecaseRecordIF* GetPMIUsecaseRecord() override { return m_real->GetPMIUsecaseRecord(); }

  private:
    bool Save(const std::string& file, eTraceDataFileType type) try {
        return m_real->SaveConfiguration(file, type);
    } catch (const std::logic_error&) {
        if (Is("swallows-logic-errors")) {
            return false;
        }
        throw;
    }

    StmDeviceConfigManagerIF* m_real;
    WrongHandler m_handler;
    WrongRecord m_record;
};

/// What goes wrong when a manager is made.
void Spoil(StmDeviceConfigManagerIF& manager) {
    if (Is("another-default")) {
        ConfigPropertyValue pins(8);
        manager.SetSTMProperty(PropertyNames::STM_DTC_target_pins, pins);
    }
    if (Is("starts-a-thread")) {
        std::thread([] { ::pause(); }).detach();
    }
    if (Is("starts-a-process") && ::fork() == 0) {
        ::pause();
    }
    if (Is("closes-streams")) {
        ::close(STDERR_FILENO);
    }
    if (Is("prints")) {
        std::puts("here I am");
    }
    if (Is("stays-loaded")) {
        Dl_info info;
        ::dladdr(reinterpret_cast<void*>(&Is), &info);
        ::dlopen(info.dli_fname, RTLD_NOW);
    }
    if (Is("hides-the-data")) {
        ::unsetenv("ZU_TRACE_DATA_DIR");
    }
    if (Is("sets-the-umask")) {
        ::umask(0);
    }
    if (Is("leaks")) {
        static_cast<char*>(std::malloc(4096))[0] = 1;
    }
}

}  // namespace

void* CreateDeviceConfigManager(CPUInfo* cpu, CDeviceIdentifier* id) {
    static CPUInfo none{"none", 0, 0, 0};
    CPUInfo* const its = cpu == nullptr && Is("null-cpu") ? &none : cpu;
    void* const real = Real<decltype(&CreateDeviceConfigManager)>("CreateDeviceConfigManager")(its, id);
    if (real == nullptr) {
        return nullptr;
    }
    auto manager = std::make_unique<WrongManager>(real);
    Spoil(*manager);
    return static_cast<CDeviceConfigManager*>(manager.release());
}

void DestroyDeviceConfigManager(CDeviceConfigManager* manager) {
    if (manager == nullptr && Is("destroys-null")) {
        std::abort();
    }
    delete manager;
}
